#include "net/SocketElement.h"

#include "server/RuntimeError.h"

#include <QElapsedTimer>
#include <QTcpSocket>
#include <QTimer>

namespace {
constexpr int kLingerMs = 10000; // how long a closed connection may take to hand over its output
}

SocketElement::SocketElement(int index, QObject* parent) : QObject(parent), index_(index) {}

SocketElement::~SocketElement() { release(); }

int SocketElement::state() const {
    if (errored_) return Error;
    if (!socket_) return Closed;
    switch (socket_->state()) {
    case QAbstractSocket::ConnectedState: return Connected;
    case QAbstractSocket::ClosingState: return Closing;
    case QAbstractSocket::UnconnectedState: return Closed;
    default: return 6; // connecting
    }
}

void SocketElement::accept(qintptr requestId) {
    if (state() != Closed) throw errors::wrongState();
    release();
    errored_ = false;
    auto* socket = new QTcpSocket(this);
    if (!socket->setSocketDescriptor(requestId)) {
        delete socket;
        throw errors::wrongState();
    }
    socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    socket_ = socket;
    connect(socket, &QTcpSocket::readyRead, this, [this] { emit dataArrival(index_, socket_->bytesAvailable()); });
    connect(socket, &QTcpSocket::disconnected, this, [this] {
        if (!errored_) emit closed(index_);
    });
    connect(socket, &QTcpSocket::errorOccurred, this, [this](QAbstractSocket::SocketError e) {
        // A peer's orderly close (or reset) is the close event alone.
        if (e == QAbstractSocket::RemoteHostClosedError || errored_) return;
        errored_ = true;
        emit error(index_, 40000 + static_cast<int>(e), socket_ ? socket_->errorString() : QString());
    });
}

QByteArray SocketElement::readAll() { return socket_ ? socket_->readAll() : QByteArray(); }

void SocketElement::send(const QByteArray& message) {
    if (state() != Connected) throw errors::wrongState();
    if (socket_->bytesToWrite() + message.size() > kOutputCap) return;
    socket_->write(message);
}

void SocketElement::close() {
    release();
    errored_ = false;
}

qint64 SocketElement::bytesQueued() const { return socket_ ? socket_->bytesToWrite() : 0; }

void SocketElement::flushFor(int timeoutMs) {
    if (!socket_ || socket_->state() != QAbstractSocket::ConnectedState) return;
    QElapsedTimer clock;
    clock.start();
    while (socket_->bytesToWrite() > 0 && clock.elapsed() < timeoutMs)
        if (!socket_->waitForBytesWritten(static_cast<int>(timeoutMs - clock.elapsed()))) break;
}

// Detaches the connection from this element, so no further event reaches the server, and
// lets it close gracefully on its own: output already queued still reaches the peer.
void SocketElement::release() {
    QTcpSocket* socket = socket_;
    socket_ = nullptr;
    if (!socket) return;
    socket->disconnect(this);
    socket->setParent(nullptr);
    QObject::connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
    socket->disconnectFromHost();
    if (socket->state() == QAbstractSocket::UnconnectedState) {
        socket->deleteLater();
        return;
    }
    QTimer::singleShot(kLingerMs, socket, [socket] {
        socket->abort();
        socket->deleteLater();
    });
}
