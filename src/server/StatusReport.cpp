#include "server/StatusReport.h"

#include "basics/Text.h"

#include <QJsonArray>
#include <QTextStream>

namespace {

QString duration(qint64 seconds) {
    return QString("%1:%2:%3")
        .arg(seconds / 3600, 2, 10, QChar('0'))
        .arg(seconds / 60 % 60, 2, 10, QChar('0'))
        .arg(seconds % 60, 2, 10, QChar('0'));
}

QString latin1(const std::string& s) {
    return text::display(s);
}

} // namespace

QString statusText(const StatusSnapshot& s) {
    QString text;
    QTextStream out(&text);
    out << s.title << " in " << s.programDir << "\n";
    out << "Players: " << s.players.size() << "\n";
    for (const PlayerStatus& p : s.players)
        out << "  " << QString::number(p.position).rightJustified(2) << "  " << p.state.leftJustified(13)
            << shownName(p.name) << " (" << shownName(p.setup) << ")  [slot " << p.slot << "]\n";
    out << "AWACS clients: " << s.awacsSlots.size() << "\n";
    out << "SIM clients: " << s.simulators.size() << "\n";
    out << "AI Spy: " << (s.aiSpyConnected ? "connected" : "not connected") << "\n";
    out << "Setups: " << s.setupsListed << "\n";
    for (const StatusSnapshot::SetupProblem& p : s.setupProblems)
        out << "  setup " << p.number << ": " << p.file << " " << p.problem
            << " (offered with an empty name)\n";
    out << "Connections:\n";
    for (const ConnectionStatus& c : s.connections) {
        const QString who = c.slot ? c.kind + " " + QString::number(c.slot) : c.kind;
        out << "  " << who.leftJustified(16) << c.address.leftJustified(24) << " connected "
            << duration(c.connectedSeconds) << "  queued " << c.bytesQueued << " B  dropped "
            << c.messagesDropped << (c.held ? "  held" : "") << "\n";
    }
    return text;
}

QJsonObject statusJson(const StatusSnapshot& s) {
    QJsonArray players;
    for (const PlayerStatus& p : s.players)
        players.append(QJsonObject{{"position", p.position},
                                   {"name", latin1(p.name)},
                                   {"mark", latin1(p.mark)},
                                   {"state", p.state},
                                   {"setup", latin1(p.setup)},
                                   {"setupNumber", p.setupNumber},
                                   {"slot", p.slot},
                                   {"address", p.address},
                                   {"connected", p.connectedSeconds}});
    QJsonArray awacsSlots;
    for (int slot : s.awacsSlots)
        awacsSlots.append(slot);
    QJsonArray simulators;
    for (const SimulatorStatus& sim : s.simulators)
        simulators.append(QJsonObject{{"name", latin1(sim.name)},
                                      {"slot", sim.slot},
                                      {"places", sim.places},
                                      {"airplanes", sim.airplanes}});
    QJsonArray connections;
    for (const ConnectionStatus& c : s.connections)
        connections.append(QJsonObject{{"kind", c.kind},
                                       {"slot", c.slot},
                                       {"address", c.address},
                                       {"connected", c.connectedSeconds},
                                       {"queued", c.bytesQueued},
                                       {"dropped", c.messagesDropped},
                                       {"held", c.held}});
    QJsonArray setupProblems;
    for (const StatusSnapshot::SetupProblem& p : s.setupProblems)
        setupProblems.append(QJsonObject{{"number", p.number}, {"file", p.file}, {"problem", p.problem}});
    auto counts = [](const QMap<QString, qint64>& map) {
        QJsonObject json;
        for (auto it = map.cbegin(); it != map.cend(); ++it)
            json.insert(it.key(), it.value());
        return json;
    };
    QJsonObject errors;
    for (const auto& [routine, count] : s.runtimeErrors)
        errors.insert("TskSrvForm1::" + QString::fromStdString(routine), count);
    return QJsonObject{
        {"schema", "tessark-status"},
        {"version", 1},
        {"program", QJsonObject{{"title", s.title},
                                {"version", s.version},
                                {"directory", s.programDir},
                                {"started", s.startedAt.toString(Qt::ISODate)},
                                {"uptime", s.uptimeSeconds}}},
        {"players", players},
        {"awacs", QJsonObject{{"count", static_cast<int>(s.awacsSlots.size())}, {"slots", awacsSlots}}},
        {"sims", QJsonObject{{"count", static_cast<int>(s.simulators.size())}, {"simulators", simulators}}},
        {"aiSpy", QJsonObject{{"connected", s.aiSpyConnected}}},
        {"connections", connections},
        {"setups", QJsonObject{{"listed", s.setupsListed}, {"problems", setupProblems}}},
        {"counters", QJsonObject{{"messagesRelayed", s.messagesRelayed},
                                 {"bytesSent", s.bytesSent},
                                 {"connectionsRefused", counts(s.connectionsRefused)},
                                 {"connectionsLetGo", counts(s.connectionsLetGo)},
                                 {"runtimeErrors", errors},
                                 {"uptime", s.uptimeSeconds}}},
    };
}
