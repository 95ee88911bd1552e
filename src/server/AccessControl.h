#pragma once
// The operator's door: ending one peer's connection (a kick), refusing addresses and networks
// at accept for a time or for good (bans, kept in the ban file across restarts), and the
// settings that say who may connect and for how long. The status window and the command line
// both come here; every refusal and every peer let go is a line of the operator's log.
#include "net/AccessGate.h"
#include "net/BanList.h"

#include <QDateTime>
#include <QList>
#include <QString>

#include <optional>

class Server;

// One peer's connection: a port and its slot (the AI Spy's link has slot 0).
struct PeerConnection {
    PortRole port = PortRole::Players;
    int slot = 0;
    bool operator==(const PeerConnection&) const = default;
};

class AccessControl {
  public:
    explicit AccessControl(Server& server);

    AccessGate& gate() { return gate_; }
    // Start-up and reload: the running settings' access rules, and the ban file read again (one
    // that cannot be read keeps the bans in force).
    void apply();

    // "player connection 3 (192.168.1.20:50412)"; empty when there is no such connection.
    QString describe(const PeerConnection& peer);
    // Ends the connection as if its peer had left; false when there is none.
    bool kick(const PeerConnection& peer, const QString& why = "kicked by the operator");
    // Every connection on every port whose peer is inside the network.
    QList<PeerConnection> connectionsIn(const Network& network);

    struct BanOutcome {
        bool added = false; // false: the list is full (BanList::kMaxBans)
        int connectionsEnded = 0;
        QString fileError; // the ban holds, but the file could not be written
    };
    // Refuses the network from now until `until` (invalid: for good) and ends its connections.
    BanOutcome ban(const Network& network, const QDateTime& until, const QString& why);
    // Takes the ban on exactly that network away; false when there was none. fileError as above.
    bool unban(const Network& network, QString* fileError);
    // The bans in force, oldest first.
    QList<Ban> bans();
    QString banFile() const;

  private:
    QString saveBans();
    void readBanFile();

    Server& server_;
    AccessGate gate_;
    bool unsaved_ = false; // the last save failed: the file does not hold the bans in force
};
