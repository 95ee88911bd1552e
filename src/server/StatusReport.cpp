#include "server/StatusReport.h"

#include "basics/Text.h"
#include "players/PlayerSessions.h"
#include "relay/AiSpyLink.h"
#include "relay/AwacsClients.h"
#include "relay/SimClients.h"
#include "server/Server.h"

#include <QDateTime>
#include <QTextStream>

namespace {

// The window's images in words.
QString markWord(const std::string& mark) {
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

QString duration(qint64 seconds) {
    return QString("%1:%2:%3")
        .arg(seconds / 3600, 2, 10, QChar('0'))
        .arg(seconds / 60 % 60, 2, 10, QChar('0'))
        .arg(seconds % 60, 2, 10, QChar('0'));
}

void connectionLine(QTextStream& out, const QString& who, const SocketElement& element,
                    const QDateTime& now) {
    out << "  " << who.leftJustified(16) << element.peerAddress().leftJustified(24) << " connected "
        << duration(element.connectedSince().secsTo(now)) << "  queued " << element.bytesQueued()
        << " B  dropped " << element.messagesDropped() << "\n";
}

void connections(QTextStream& out, SlotChannel& channel, const QString& label, const QDateTime& now) {
    for (int slot : channel.sockets().loadedIndices())
        connectionLine(out, label + " " + QString::number(slot), channel.sockets().element(slot), now);
}

} // namespace

QString statusReport(Server& server) {
    QString text;
    QTextStream out(&text);
    const QDateTime now = QDateTime::currentDateTime();
    out << Server::title() << " in " << server.appDir() << "\n";

    const VbList<PlayerRecord>& roster = server.players().roster();
    out << "Players: " << roster.ubound() << "\n";
    for (int i = 1; i <= roster.ubound(); ++i) {
        const PlayerRecord& p = roster[i];
        out << "  " << QString::number(i).rightJustified(2) << "  " << markWord(p.mark).leftJustified(13)
            << text::display(p.name + " (" + p.setupName + ")") << "  [slot " << p.slot << "]\n";
    }
    out << "AWACS clients: " << server.awacs().listed().ubound() << "\n";
    out << "SIM clients: " << server.sims().simulators().ubound() << "\n";
    SocketElement& aiSpy = server.aiSpy().connection();
    const bool aiSpyUp = aiSpy.state() == SocketElement::Connected;
    out << "AI Spy: " << (aiSpyUp ? "connected" : "not connected") << "\n";

    out << "Connections:\n";
    connections(out, server.playerChannel(), "player", now);
    connections(out, server.awacsChannel(), "AWACS client", now);
    connections(out, server.simChannel(), "SIM client", now);
    if (aiSpyUp) connectionLine(out, "AI Spy", aiSpy, now);
    return text;
}
