#include "server/StatusSnapshot.h"

#include "basics/Text.h"
#include "net/SocketElement.h"
#include "players/PlayerSessions.h"
#include "relay/AiSpyLink.h"
#include "relay/AwacsClients.h"
#include "relay/SimClients.h"
#include "server/Server.h"
#include "setups/SetupCatalogue.h"

namespace {

QString stateOfMark(const std::string& mark) {
    switch (PlayerSessions::imageOfMark(mark)) {
    case 1:
        return "verified";
    case 2:
        return "failed";
    case 3:
        return "not verified";
    default:
        return "-";
    }
}

ConnectionStatus connectionOf(const QString& kind, int slot, const SocketElement& element,
                              const QDateTime& now) {
    return {kind,
            slot,
            element.peerAddress(),
            element.connectedSince().secsTo(now),
            element.bytesQueued(),
            element.messagesDropped(),
            element.holdsUnhandled()};
}

void addConnections(StatusSnapshot& snapshot, SlotChannel& channel, const QDateTime& now) {
    const QString kind = QString::fromLatin1(channel.names().peerKind.data(),
                                             static_cast<qsizetype>(channel.names().peerKind.size()));
    for (int slot : channel.sockets().loadedIndices())
        snapshot.connections.push_back(connectionOf(kind, slot, channel.sockets().element(slot), now));
}

} // namespace

QString shownName(const std::string& name) {
    return text::printable(name, 64);
}

StatusSnapshot takeStatusSnapshot(Server& server) {
    StatusSnapshot s;
    const QDateTime now = QDateTime::currentDateTime();
    s.title = Server::title();
    s.version =
        QString("%1.%2.%3").arg(TESSARK_VERSION_MAJOR).arg(TESSARK_VERSION_MINOR).arg(TESSARK_VERSION_PATCH);
    s.programDir = server.appDir();
    s.startedAt = server.startedAt();
    s.uptimeSeconds = server.startedAt().isValid() ? server.startedAt().secsTo(now) : 0;

    const VbList<PlayerRecord>& roster = server.players().roster();
    for (int i = 1; i <= roster.ubound(); ++i) {
        const PlayerRecord& p = roster[i];
        PlayerStatus player{i,      p.name, p.mark, stateOfMark(p.mark), p.setupName, p.setupNumber,
                            p.slot, {},     0};
        if (SocketElement* element = server.playerChannel().sockets().find(p.slot)) {
            player.address = element->peerAddress();
            player.connectedSeconds = element->connectedSince().secsTo(now);
        }
        s.players.push_back(std::move(player));
    }
    const VbList<int16_t>& awacs = server.awacs().listed();
    for (int k = 1; k <= awacs.ubound(); ++k)
        s.awacsSlots.push_back(awacs[k]);
    const VbList<SimRecord>& sims = server.sims().simulators();
    for (int i = 1; i <= sims.ubound(); ++i) {
        SimulatorStatus sim{sims[i].name, sims[i].slot, sims[i].airplanes.ubound(), 0};
        for (int j = 1; j <= sims[i].airplanes.ubound(); ++j)
            sim.airplanes += sims[i].airplanes[j] != 0;
        s.simulators.push_back(std::move(sim));
    }

    addConnections(s, server.playerChannel(), now);
    addConnections(s, server.awacsChannel(), now);
    addConnections(s, server.simChannel(), now);
    SocketElement& aiSpy = server.aiSpy().connection();
    s.aiSpyConnected = aiSpy.state() == SocketElement::Connected;
    if (s.aiSpyConnected) s.connections.push_back(connectionOf("AI Spy", 0, aiSpy, now));

    const auto& setups = server.setups().list();
    s.setupsListed = setups.ubound();
    for (int i = 1; i <= setups.ubound(); ++i)
        if (!setups[i].problem.isEmpty())
            s.setupProblems.push_back({i, text::printable(setups[i].filePath, 4096), setups[i].problem});
    s.messagesRelayed = server.awacs().reportsRelayed();
    s.bytesSent = SocketElement::bytesHandedOver();
    const QMap<QString, qint64> refusals = server.refusalCounts();
    for (auto it = refusals.cbegin(); it != refusals.cend(); ++it) {
        const QString reason = it.key().section('/', 1);
        (reason == "idle" || reason == "kicked" ? s.connectionsLetGo : s.connectionsRefused)
            .insert(it.key(), it.value());
    }
    s.runtimeErrors = server.errorLog().countsByRoutine();
    return s;
}
