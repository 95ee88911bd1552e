#include "net/SocketElement.h"

#include "server/RuntimeError.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTcpSocket>
#include <QTimer>

#include <algorithm>
#include <cerrno>
#include <vector>

#if defined(Q_OS_LINUX)
#include <sys/socket.h>
#endif

namespace {
constexpr int kLingerMs = 10000; // how long a closed connection may take to hand over its output
constexpr size_t kOutboxKeptCapacity = 512 * 1024; // what 48 busy peers give one event

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
    // Unbuffered: arrivals are read straight from the system and gathered output is written
    // straight to it, so no per-read or per-write buffer of the socket's own is allocated on
    // the way; only output the system cannot take at once waits in the socket's queue.
    if (!socket->setSocketDescriptor(requestId, QAbstractSocket::ConnectedState,
                                     QIODevice::ReadWrite | QIODevice::Unbuffered)) {
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

void SocketElement::send(std::string_view command, std::string_view data) {
    // A connection that took a message this event is still connected: nothing but the event
    // loop, or a close that empties the outbox, changes that.
    if (outbox_.empty()) {
        if (state() != Connected) throw errors::wrongState();
        queuedBeforeEvent_ = socket_->bytesToWrite();
    }
    const qint64 size = static_cast<qint64>(command.size() + data.size() + 1);
    if (queuedBeforeEvent_ + static_cast<qint64>(outbox_.size()) + size > kOutputCap) return;
    if (outbox_.empty()) {
        if (std::find(gathering.begin(), gathering.end(), this) == gathering.end()) gathering.push_back(this);
        if (!handOverPosted) {
            handOverPosted = true;
            QMetaObject::invokeMethod(QCoreApplication::instance(), &SocketElement::handOverAll, Qt::QueuedConnection);
        }
    }
    outbox_.append(command);
    outbox_.append(data);
    outbox_.push_back('\0');
}

void SocketElement::handOverAll() {
    handOverPosted = false;
    for (size_t i = 0; i < gathering.size(); ++i) gathering[i]->handOverOutbox();
    gathering.clear();
}

namespace {
// Writes what the system takes at once, without waiting; 0 where that is not done directly.
qsizetype writeWithoutWaiting(qintptr descriptor, const char* data, qsizetype size) {
#if defined(Q_OS_LINUX)
    qsizetype done = 0;
    while (done < size) {
        const ssize_t n = ::send(static_cast<int>(descriptor), data + done, static_cast<size_t>(size - done),
                                 MSG_DONTWAIT | MSG_NOSIGNAL);
        if (n > 0)
            done += n;
        else if (n < 0 && errno == EINTR)
            continue;
        else
            break; // full, or failed: the socket's own queue takes the rest and reports any failure
    }
    return done;
#else
    Q_UNUSED(descriptor);
    Q_UNUSED(data);
    Q_UNUSED(size);
    return 0;
#endif
}
} // namespace

// While the socket's own queue is empty, the gathered output goes straight to the system from
// the outbox, which keeps its buffer warm for the next event; what does not fit joins the
// socket's queue, which writes it out when it can and keeps the order.
void SocketElement::handOverOutbox() {
    if (outbox_.empty()) return;
    if (socket_ && socket_->state() == QAbstractSocket::ConnectedState) {
        const auto size = static_cast<qsizetype>(outbox_.size());
        qsizetype done = 0;
        if (socket_->bytesToWrite() == 0) done = writeWithoutWaiting(socket_->socketDescriptor(), outbox_.data(), size);
        if (done < size) socket_->write(outbox_.data() + done, size - done);
    }
    outbox_.clear();
    if (outbox_.capacity() > kOutboxKeptCapacity) std::string().swap(outbox_); // after a burst
}

void SocketElement::close() {
    release();
    errored_ = false;
}

qint64 SocketElement::bytesQueued() const {
    return static_cast<qint64>(outbox_.size()) + (socket_ ? socket_->bytesToWrite() : 0);
}

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
