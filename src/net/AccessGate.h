#pragma once
// Who may connect, checked at accept on every port: the operator's bans and each port's allow
// list. It keeps the access settings the channels work by (the grace for registering, the share
// of a port one address may hold, the broadcast budget, the silence limit) and counts every
// connection refused or let go, by port and reason. Every refusal is one line of the operator's
// log; a flood of them is summarised.
#include "basics/OperatorLog.h"
#include "basics/RepeatSummary.h"
#include "net/AccessSettings.h"
#include "net/BanList.h"

#include <QMap>
#include <QObject>

#include <array>

enum class Refusal {
    Banned,     // on the operator's ban list
    NotAllowed, // outside the port's allow list
    PerAddress, // the address holds its share of the port already
    Full,       // every slot is taken
    Busy,       // the AI Spy link is in use
    Idle,       // let go: did not register within the grace
    Kicked,     // let go by the operator (a kick, or a ban of its address)
};
inline constexpr int kRefusalKinds = 7;
// "banned", "not-allowed", "per-address", "full", "busy", "idle", "kicked".
const char* refusalKey(Refusal why);

class AccessGate : public QObject {
    Q_OBJECT
  public:
    AccessGate();

    void apply(const AccessSettings& settings);
    const AccessSettings& settings() const { return settings_; }
    BanList& bans() { return bans_; }
    const BanList& bans() const { return bans_; }

    // Whether a peer at the address may connect to the port (bans and the allow list); a refusal
    // is counted and told: "<peerKind> connection from <address> refused: <why>".
    bool admits(PortRole port, const QHostAddress& address, const QString& peerKind);
    // A refusal the caller decided on (per address, full, busy), counted and told.
    void refuse(PortRole port, Refusal why, const QHostAddress& address, const QString& line);
    // A connection let go (idle, kicked), counted; its line is the channel's.
    void count(PortRole port, Refusal why) { ++counts_[portIndex(port)][static_cast<size_t>(why)]; }

    // The counts so far by "<port>/<reason>" ("players/banned", "ai-spy/busy"...), with the
    // port keys of the settings file and the reasons of refusalKey(); only those above zero.
    QMap<QString, qint64> counts() const;

  signals:
    // New settings were applied (a reload): the channels re-arm what depends on them.
    void changed();

  private:
    AccessSettings settings_;
    BanList bans_;
    std::array<std::array<qint64, kRefusalKinds>, 4> counts_{};
    RepeatSummary told_{lcAccess};
};
