#pragma once
// The operator's bans: addresses and networks refused at accept, each for good or until a time.
// Kept in a text file the operator can read (and edit, then reload):
//
//   # one ban a line: NETWORK forever|until TIME [why]
//   203.0.113.9 forever squatted the AWACS port
//   198.51.100.0/24 until 2026-11-26T18:00:00Z
//
// Times are UTC. The file may be damaged: a line that does not read is passed over and named,
// the rest still hold.
#include "net/AccessSettings.h"

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QString>
#include <QStringList>

struct Ban {
    Network network;
    QDateTime until; // invalid: for good
    QString why;     // one line, may be empty
    bool forGood() const { return !until.isValid(); }
    bool operator==(const Ban&) const = default;
};

// "203.0.113.9", "198.51.100.0/24", "2001:db8::/32": a bare address is a network of one. Nothing
// when the text is none of these.
std::optional<Network> parseNetwork(const QString& text);
// The network as the operator wrote it, a network of one as its bare address.
QString networkText(const Network& network);
// Whether the address is inside the network; an IPv4 peer of a dual-stack socket
// (::ffff:a.b.c.d) counts as a.b.c.d.
bool networkHolds(const Network& network, const QHostAddress& address);

class BanList {
  public:
    // More would make every accept slow; an operator who needs more bans whole networks.
    static constexpr int kMaxBans = 1024;
    // A reason longer than this is cut: the file keeps a ban a line, of at most 1,024 characters.
    static constexpr int kMaxWhyChars = 200;

    // The ban in force on the address at `now`, or none.
    const Ban* find(const QHostAddress& address, const QDateTime& now) const;
    // Adds a ban, or replaces the one on the same network; false when the list is full.
    bool add(const Ban& ban);
    // Takes the ban on exactly that network away; false when there was none.
    bool remove(const Network& network);
    // Forgets the bans that ran out by `now`; returns how many.
    int dropExpired(const QDateTime& now);
    const QList<Ban>& entries() const { return bans_; }
    void clear() { bans_.clear(); }

  private:
    QList<Ban> bans_;
};

struct BanText {
    QList<Ban> bans;
    QStringList problems; // "line 3: ...", for the operator's log
};

// The file's text as bans; lines that do not read, and bans past kMaxBans, are named in problems.
BanText parseBans(const QByteArray& text);
// The bans as the file holds them, with the comment that explains the file.
QByteArray formatBans(const QList<Ban>& bans);
