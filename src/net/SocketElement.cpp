#include "net/SocketElement.h"

#include "server/RuntimeError.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTcpSocket>
#include <QTimer>

#include <algorithm>
#include <vector>

namespace {
constexpr int kLingerMs = 10000; // how long a closed connection may take to hand over its output

// The elements that gathered output during the current event. One posted call hands all of
// it over once the event is over; an element that goes away leaves the list first.
std::vector<SocketElement*> gathering;
bool handOverPosted = false;
} // namespace

SocketElement::SocketElement(int index, QObject* parent) : QObject(parent), index_(index) {}

SocketElement::~SocketElement() {
    release();
    std::erase(gathering, this);
}

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
    if (bytesQueued() + message.size() > kOutputCap) return;
    if (outbox_.isEmpty()) {
        if (std::find(gathering.begin(), gathering.end(), this) == gathering.end()) gathering.push_back(this);
        if (!handOverPosted) {
            handOverPosted = true;
            QMetaObject::invokeMethod(QCoreApplication::instance(), &SocketElement::handOverAll, Qt::QueuedConnection);
        }
    }
    outbox_.append(message);
}

void SocketElement::handOverAll() {
    handOverPosted = false;
    for (size_t i = 0; i < gathering.size(); ++i) gathering[i]->handOverOutbox();
    gathering.clear();
}

void SocketElement::handOverOutbox() {
    if (outbox_.isEmpty()) return;
    if (socket_ && socket_->state() == QAbstractSocket::ConnectedState) socket_->write(outbox_);
    outbox_.resize(0); // keeps its capacity for the next event
}

void SocketElement::close() {
    release();
    errored_ = false;
}

qint64 SocketElement::bytesQueued() const { return outbox_.size() + (socket_ ? socket_->bytesToWrite() : 0); }

void SocketElement::flushFor(int timeoutMs) {
    handOverOutbox();
    if (!socket_ || socket_->state() != QAbstractSocket::ConnectedState) return;
    QElapsedTimer clock;
    clock.start();
    while (socket_->bytesToWrite() > 0 && clock.elapsed() < timeoutMs)
        if (!socket_->waitForBytesWritten(static_cast<int>(timeoutMs - clock.elapsed()))) break;
}

// Detaches the connection from this element, so no further event reaches the server, and
// lets it close gracefully on its own: output already queued still reaches the peer.
void SocketElement::release() {
    handOverOutbox();
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
