#include "server/AccessControl.h"

#include "basics/OperatorLog.h"
#include "net/BanFile.h"
#include "relay/AiSpyLink.h"
#include "server/Server.h"

#include <QDir>

namespace {
SlotChannel* channelOf(Server& server, PortRole port) {
    switch (port) {
    case PortRole::Players:
        return &server.playerChannel();
    case PortRole::Awacs:
        return &server.awacsChannel();
    case PortRole::Sims:
        return &server.simChannel();
    case PortRole::AiSpy:
        break;
    }
    return nullptr;
}
} // namespace

AccessControl::AccessControl(Server& server) : server_(server) {}

// A server given no settings file has the default name, relative to its program directory.
QString AccessControl::banFile() const {
    const QString name = server_.settings().access.banFile;
    return QDir::isAbsolutePath(name) ? name : server_.appDir() + name;
}

void AccessControl::apply() {
    gate_.apply(server_.settings().access);
    readBanFile();
}

void AccessControl::readBanFile() {
    const QString path = banFile();
    // Bans and unbans that could not be saved are the newer word: the file would undo them.
    if (unsaved_) {
        qCWarning(lcAccess,
                  "the bans in force differ from %s, which could not be written: they stay, and "
                  "are written again",
                  qUtf8Printable(path));
        saveBans();
        return;
    }
    const BanFileReading reading = ::readBanFile(path);
    if (!reading.error.isEmpty()) {
        qCWarning(lcAccess, "the ban file %s cannot be read (%s): the bans in force stay",
                  qUtf8Printable(path), qUtf8Printable(reading.error));
        return;
    }
    for (const QString& problem : reading.text.problems)
        qCWarning(lcAccess, "the ban file %s, %s: passed over", qUtf8Printable(path),
                  qUtf8Printable(problem));
    gate_.bans().clear();
    for (const Ban& ban : reading.text.bans)
        gate_.bans().add(ban);
    gate_.bans().dropExpired(QDateTime::currentDateTimeUtc());
    if (!gate_.bans().entries().isEmpty())
        qCInfo(lcAccess, "%lld bans in force (%s)", static_cast<long long>(gate_.bans().entries().size()),
               qUtf8Printable(path));
}

QString AccessControl::saveBans() {
    gate_.bans().dropExpired(QDateTime::currentDateTimeUtc());
    const QString path = banFile();
    const QString error = writeBanFile(path, gate_.bans().entries());
    unsaved_ = !error.isEmpty();
    if (unsaved_)
        qCWarning(lcAccess, "the ban file %s cannot be written (%s): the bans hold until the server stops",
                  qUtf8Printable(path), qUtf8Printable(error));
    return error;
}

QString AccessControl::describe(const PeerConnection& peer) {
    if (peer.port == PortRole::AiSpy) {
        SocketElement& link = server_.aiSpy().connection();
        if (link.state() != SocketElement::Connected) return {};
        return "AI Spy link (" + link.peerAddress() + ")";
    }
    SlotChannel* channel = channelOf(server_, peer.port);
    if (!channel->taken(peer.slot) || !channel->sockets().isLoaded(peer.slot)) return {};
    return channel->describe(peer.slot);
}

bool AccessControl::kick(const PeerConnection& peer, const QString& why) {
    if (describe(peer).isEmpty()) return false;
    if (peer.port == PortRole::AiSpy)
        server_.aiSpy().letGo(why, Refusal::Kicked);
    else
        channelOf(server_, peer.port)->letGo(peer.slot, why, Refusal::Kicked);
    return true;
}

QList<PeerConnection> AccessControl::connectionsIn(const Network& network) {
    QList<PeerConnection> found;
    for (PortRole port : {PortRole::Players, PortRole::Awacs, PortRole::Sims})
        for (int slot : channelOf(server_, port)->slotsIn(network))
            found.append({port, slot});
    SocketElement& link = server_.aiSpy().connection();
    if (link.state() == SocketElement::Connected && networkHolds(network, link.peerHost()))
        found.append({PortRole::AiSpy, 0});
    return found;
}

AccessControl::BanOutcome AccessControl::ban(const Network& network, const QDateTime& until,
                                             const QString& why) {
    BanOutcome outcome;
    // Whole seconds, as the file keeps them.
    QDateTime end = until.isValid() ? until.toUTC() : QDateTime();
    if (end.isValid()) end = end.addMSecs(-end.time().msec());
    gate_.bans().dropExpired(QDateTime::currentDateTimeUtc());
    outcome.added = gate_.bans().add({network, end, why.left(BanList::kMaxWhyChars)});
    if (!outcome.added) {
        qCWarning(lcAccess, "%s not banned: the ban list is full (%d bans)",
                  qUtf8Printable(networkText(network)), BanList::kMaxBans);
        return outcome;
    }
    qCInfo(lcAccess, "%s banned %s%s", qUtf8Printable(networkText(network)),
           end.isValid() ? qUtf8Printable("until " + end.toString(Qt::ISODate)) : "for good",
           why.isEmpty() ? "" : qUtf8Printable(" (" + why + ")"));
    for (const PeerConnection& peer : connectionsIn(network))
        outcome.connectionsEnded += kick(peer, "its address was banned") ? 1 : 0;
    outcome.fileError = saveBans();
    return outcome;
}

bool AccessControl::unban(const Network& network, QString* fileError) {
    if (!gate_.bans().remove(network)) return false;
    qCInfo(lcAccess, "%s unbanned", qUtf8Printable(networkText(network)));
    const QString error = saveBans();
    if (fileError) *fileError = error;
    return true;
}

QList<Ban> AccessControl::bans() {
    gate_.bans().dropExpired(QDateTime::currentDateTimeUtc());
    return gate_.bans().entries();
}
