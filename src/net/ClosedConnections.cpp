#include "net/ClosedConnections.h"

#include <QTcpSocket>
#include <QTimer>

#include <algorithm>

ClosedConnections& ClosedConnections::instance() {
    static ClosedConnections closed;
    return closed;
}

void ClosedConnections::adopt(QTcpSocket* socket) {
    socket->disconnectFromHost();
    if (socket->state() == QAbstractSocket::UnconnectedState) {
        socket->deleteLater();
        return;
    }
    sockets_.push_back(socket);
    // Whichever comes first ends it: the peer took everything, or the time ran out.
    connect(socket, &QTcpSocket::disconnected, this, [this, socket] { forget(socket); });
    QTimer::singleShot(kLingerMs, socket, [this, socket] { forget(socket); });
    enforceLimits();
}

void ClosedConnections::forget(QTcpSocket* socket) {
    const auto found = std::find(sockets_.begin(), sockets_.end(), socket);
    if (found == sockets_.end()) return;
    sockets_.erase(found);
    socket->disconnect(this);
    socket->abort();
    socket->deleteLater();
}

void ClosedConnections::enforceLimits() {
    qint64 bytes = 0;
    for (QTcpSocket* socket : sockets_)
        bytes += socket->bytesToWrite();
    while (!sockets_.empty() && (count() > kMaxCount || bytes > kMaxBytes)) {
        QTcpSocket* oldest = sockets_.front();
        bytes -= oldest->bytesToWrite();
        forget(oldest);
    }
}

bool ClosedConnections::writeOut() {
    bool pending = false;
    // A copy: a socket whose last byte went out closes and leaves the list on the way.
    const std::deque<QTcpSocket*> sockets = sockets_;
    for (QTcpSocket* socket : sockets) {
        if (std::find(sockets_.begin(), sockets_.end(), socket) == sockets_.end()) continue;
        if (socket->bytesToWrite() == 0) continue;
        socket->flush();
        pending = pending || socket->bytesToWrite() > 0;
    }
    return pending;
}
