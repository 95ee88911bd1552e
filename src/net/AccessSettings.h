#pragma once
// Who may hold the squadron's connections, and for how long without saying who they are: the
// operator's settings for the four ports. The defaults let any honest squadron in.
#include <QHostAddress>
#include <QList>
#include <QPair>
#include <QString>

#include <array>

// The four ports, in the order the settings and the status name them.
enum class PortRole { Players, Awacs, Sims, AiSpy };
inline constexpr std::array<PortRole, 4> kPortRoles{PortRole::Players, PortRole::Awacs, PortRole::Sims,
                                                    PortRole::AiSpy};
inline constexpr int portIndex(PortRole role) {
    return static_cast<int>(role);
}
// The port's name in the settings and the operator's log: "players", "awacs", "sims", "ai-spy".
inline const char* portKey(PortRole role) {
    switch (role) {
    case PortRole::Players:
        return "players";
    case PortRole::Awacs:
        return "awacs";
    case PortRole::Sims:
        return "sims";
    case PortRole::AiSpy:
        return "ai-spy";
    }
    return "";
}

// An address with its prefix length: 192.168.1.0/24, 10.0.0.7/32, 2001:db8::/32.
using Network = QPair<QHostAddress, int>;

struct AccessSettings {
    // A connection that has not registered within this many seconds is let go; 0: never.
    int idleGraceSeconds = 30;
    // The most connections of one port that one address may hold at once; 0: no limit. Half the
    // slots: a squadron of two dozen behind one router still fits, one stranger cannot fill a port.
    int perAddressSlots = 24;
    // What one connection's messages may make the server send to the others each second (a
    // broadcast of a name to every player counts its size once per player).
    qint64 broadcastBytesPerSecond = 256 * 1024;
    // A peer that acknowledges nothing for this long (no answer to what was sent, none to the
    // keep-alive probes) is taken for vanished and its connection ends as a failed one.
    int silenceLimitSeconds = 60;
    // Per port, the networks whose peers may connect; empty lets everyone.
    std::array<QList<Network>, 4> allow;
    // The operator's bans, kept across restarts; relative to the program directory.
    QString banFile = "tessark-server.bans";
};
