#pragma once
// One look at the running server, taken inside its event loop: what the status window shows,
// each connection, and the counters since start. The operator's `status` renders it as text or
// as JSON, so the two never disagree.
#include <QDateTime>
#include <QMap>
#include <QString>

#include <string>
#include <utility>
#include <vector>

class Server;

struct ConnectionStatus {
    QString kind; // "player", "AWACS client", "SIM client", "AI Spy"
    int slot = 0; // 0 for the AI Spy
    QString address;
    qint64 connectedSeconds = 0;
    qint64 bytesQueued = 0;
    qint64 messagesDropped = 0;
    bool held = false; // its requests wait until it has read its answers
};

struct PlayerStatus {
    int position = 0;  // in the roster, as players number each other
    std::string name;  // as the player sent it
    std::string mark;  // "-", "O", "X"
    QString state;     // "not verified", "verified", "failed"
    std::string setup; // the setup last fetched, "" before any
    int setupNumber = 0;
    int slot = 0;
    QString address;
    qint64 connectedSeconds = 0;
};

struct SimulatorStatus {
    std::string name;
    int slot = 0;
    int places = 0;
    int airplanes = 0; // places with an airplane
};

struct StatusSnapshot {
    QString title;   // "QUILLON v1.1.0b"
    QString version; // "1.1.0"
    QString programDir;
    QDateTime startedAt;
    qint64 uptimeSeconds = 0;
    std::vector<PlayerStatus> players;
    std::vector<int> awacsSlots; // the listed AWACS clients, in list order
    std::vector<SimulatorStatus> simulators;
    bool aiSpyConnected = false;
    std::vector<ConnectionStatus> connections;
    int setupsListed = 0;
    // Listed setups whose file gave nothing (players are offered them with an empty name).
    struct SetupProblem {
        int number;
        QString file;
        QString problem; // "not found", "cannot be read", ...
    };
    std::vector<SetupProblem> setupProblems;
    qint64 messagesRelayed = 0;               // reports relayed to the AWACS clients
    qint64 bytesSent = 0;                     // handed to connections, all ports
    QMap<QString, qint64> connectionsRefused; // at accept, by port and reason ("awacs/banned")
    QMap<QString, qint64> connectionsLetGo;   // ended by the server, by port and reason: idle, kicked
    std::vector<std::pair<std::string, qint64>> runtimeErrors; // by routine
};

StatusSnapshot takeStatusSnapshot(Server& server);

// A peer's name as it may reach a terminal: control bytes escaped, a long name cut.
QString shownName(const std::string& name);
