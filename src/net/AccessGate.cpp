#include "net/AccessGate.h"

#include "net/PeerAddress.h"

#include <QDateTime>

const char* refusalKey(Refusal why) {
    switch (why) {
    case Refusal::Banned:
        return "banned";
    case Refusal::NotAllowed:
        return "not-allowed";
    case Refusal::PerAddress:
        return "per-address";
    case Refusal::Full:
        return "full";
    case Refusal::Busy:
        return "busy";
    case Refusal::Idle:
        return "idle";
    case Refusal::Kicked:
        return "kicked";
    }
    return "";
}

AccessGate::AccessGate() = default;

void AccessGate::apply(const AccessSettings& settings) {
    settings_ = settings;
    emit changed();
}

bool AccessGate::admits(PortRole port, const QHostAddress& address, const QString& peerKind) {
    const QHostAddress plain = plainAddress(address);
    const QString from = QString("%1 connection from %2 refused: ").arg(peerKind, plain.toString());
    if (const Ban* ban = bans_.find(plain, QDateTime::currentDateTimeUtc())) {
        refuse(port, Refusal::Banned, plain,
               from + "banned (" + networkText(ban->network) +
                   (ban->forGood() ? QString(", for good") : QString()) + ")");
        return false;
    }
    const QList<Network>& allowed = settings_.allow[static_cast<size_t>(portIndex(port))];
    if (allowed.isEmpty()) return true;
    for (const Network& network : allowed)
        if (networkHolds(network, plain)) return true;
    refuse(port, Refusal::NotAllowed, plain, from + QString("not in allow-%1").arg(portKey(port)));
    return false;
}

void AccessGate::refuse(PortRole port, Refusal why, const QHostAddress& address, const QString& line) {
    count(port, why);
    told_.note(QString("%1 connections refused (%2) from %3")
                   .arg(portKey(port), refusalKey(why), plainAddress(address).toString()),
               line);
}

QMap<QString, qint64> AccessGate::counts() const {
    QMap<QString, qint64> counts;
    for (PortRole port : kPortRoles)
        for (int why = 0; why < kRefusalKinds; ++why)
            if (const qint64 n = counts_[static_cast<size_t>(portIndex(port))][static_cast<size_t>(why)])
                counts.insert(QString("%1/%2").arg(portKey(port), refusalKey(static_cast<Refusal>(why))), n);
    return counts;
}
