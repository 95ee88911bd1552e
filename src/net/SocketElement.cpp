#include "net/SocketElement.h"

#include "basics/RuntimeError.h"
#include "net/ClosedConnections.h"
#include "net/Framing.h"
#include "net/GatheredWrite.h"
#include "net/MissedCloses.h"
#include "net/PeerAddress.h"
#include "net/PeerLiveness.h"

#include <QCoreApplication>
#include <QTcpSocket>
#include <QTimer>

#include <algorithm>
#include <cstring>
#include <vector>

namespace {
// A connection's own messages of one event are answers and announcements: a few kilobytes.
constexpr size_t kOwnKeptCapacity = 64 * 1024;
constexpr size_t kPiecesKeptCapacity = 256;
constexpr size_t kInboxKeptCapacity = 64 * 1024;

// The elements that gathered output during the current event. One posted call hands all of
// it over once the event is over; an element that goes away leaves the list first.
std::vector<SocketElement*> gathering;
bool handOverPosted = false;
qint64 handedOver = 0;
} // namespace

SocketElement::SocketElement(int index, QObject* parent) : QObject(parent), index_(index) {}

SocketElement::~SocketElement() {
    release();
    std::erase(gathering, this);
}

qintptr SocketElement::descriptor() const {
    return socket_ ? socket_->socketDescriptor() : -1;
}

qint64 SocketElement::msSinceAccepted() const {
    return std::chrono::duration_cast<std::chrono::milliseconds>(SendBudget::Clock::now() - acceptedAt_)
        .count();
}

QString SocketElement::peerAddress() const {
    if (!socket_) return {};
    // An IPv4 peer of a dual-stack socket reads as ::ffff:a.b.c.d; the operator knows a.b.c.d.
    QHostAddress address = socket_->peerAddress();
    bool isV4 = false;
    const quint32 v4 = address.toIPv4Address(&isV4);
    if (isV4) address = QHostAddress(v4);
    return address.toString() + ":" + QString::number(socket_->peerPort());
}

int SocketElement::state() const {
    if (errored_) return Error;
    if (!socket_) return Closed;
    switch (socket_->state()) {
    case QAbstractSocket::ConnectedState:
        return Connected;
    case QAbstractSocket::ClosingState:
        return Closing;
    case QAbstractSocket::UnconnectedState:
        return Closed;
    default:
        return 6; // connecting
    }
}

void SocketElement::accept(qintptr requestId, const ConnectionTerms& terms) {
    if (state() != Closed) throw errors::wrongState();
    release();
    errored_ = false;
    auto* socket = new QTcpSocket(this);
    if (!socket->setSocketDescriptor(requestId, QAbstractSocket::ConnectedState, QIODevice::ReadWrite)) {
        delete socket;
        throw errors::wrongState();
    }
    // The socket reads from the system into a buffer of its own: bounded to one arrival, it
    // leaves the rest in the system (which slows the peer down) until this one is handled. The
    // AI Spy link (the element outside any array, index 0) takes its whole batch as one arrival.
    socket->setReadBufferSize(index_ == 0 ? kMaxWholeArrivalBytes : kMaxArrivalBytes);
    socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    watchPeerLiveness(requestId, terms.silenceLimitSeconds);
    socket_ = socket;
    socketHoldsOutput_ = false;
    connectedSince_ = QDateTime::currentDateTime();
    acceptedAt_ = SendBudget::Clock::now();
    messagesDropped_ = 0;
    peerHost_ = plainAddress(socket->peerAddress());
    shareKey_ = shareKeyOf(peerHost_);
    registered_ = false;
    budgetRate_ = terms.budgetRate;
    budget_.reset(terms.budgetRate);
    connect(socket, &QTcpSocket::readyRead, this,
            [this] { emit dataArrival(index_, socket_->bytesAvailable()); });
    connect(socket, &QTcpSocket::bytesWritten, this, [this] { noticeDrain(); });
    connect(socket, &QTcpSocket::disconnected, this, [this] {
        if (!errored_) emit closed(index_);
    });
    connect(socket, &QTcpSocket::errorOccurred, this, [this](QAbstractSocket::SocketError e) {
        // A peer's orderly close (or reset) is the close event alone.
        if (e != QAbstractSocket::RemoteHostClosedError) fail(e);
    });
    missed_closes::watch(*this);
}

void SocketElement::fail(int socketError) {
    if (errored_) return;
    errored_ = true;
    emit error(index_, 40000 + socketError, socket_ ? socket_->errorString() : QString());
}

void SocketElement::endIfPeerGone() {
    if (!socket_ || socket_->state() != QAbstractSocket::ConnectedState) {
        missed_closes::forget(*this); // its end was reported after all
        return;
    }
    switch (missed_closes::lookAt(socket_->socketDescriptor())) {
    case missed_closes::PeerEnd::None:
        return;
    case missed_closes::PeerEnd::Closed:
        socket_->abort(); // which raises the close event, as the peer's close does
        return;
    case missed_closes::PeerEnd::Failed:
        fail(QAbstractSocket::NetworkError);
        return;
    }
}

std::string_view SocketElement::readMessages() {
    return read(kMaxArrivalBytes, true);
}

std::string_view SocketElement::readWhole() {
    return read(kMaxWholeArrivalBytes, false);
}

std::string_view SocketElement::read(qint64 limit, bool keepCutMessage) {
    inbox_.swap(carried_);
    carried_.clear();
    if (!socket_) return {};
    // The socket reads from the system into its own buffer, at most one arrival's worth (see
    // accept()); all of it is taken here. A full buffer means the system holds more.
    const qint64 waiting = std::min(socket_->bytesAvailable(), limit);
    const size_t before = inbox_.size();
    inbox_.resize(before + static_cast<size_t>(waiting));
    const qint64 got = waiting > 0 ? std::max<qint64>(0, socket_->read(inbox_.data() + before, waiting)) : 0;
    inbox_.resize(before + static_cast<size_t>(got));

    std::string_view arrival(inbox_);
    if (skippingLongMessage_) { // the rest of a message too long to keep, up to its NUL
        const size_t nul = arrival.find('\0', before);
        skippingLongMessage_ = nul == std::string_view::npos;
        arrival.remove_prefix(skippingLongMessage_ ? arrival.size() : nul + 1);
    }
    if (keepCutMessage && got >= limit) {
        const size_t lastNul = arrival.rfind('\0');
        const std::string_view tail =
            lastNul == std::string_view::npos ? arrival : arrival.substr(lastNul + 1);
        if (tail.size() > kMaxMessageBytes)
            skippingLongMessage_ = true;
        else
            carried_.assign(tail);
        arrival.remove_suffix(tail.size());
    }
    return arrival;
}

void SocketElement::holdUnhandled(std::string_view rest) {
    held_ = true;
    heldFrom_ = rest.empty() ? inbox_.size() : static_cast<size_t>(rest.data() - inbox_.data());
    noticeDrain();
}

std::string_view SocketElement::unhandled() const {
    if (!held_) return {};
    return std::string_view(inbox_).substr(std::min(heldFrom_, inbox_.size()));
}

void SocketElement::finishArrival() {
    held_ = false;
    heldFrom_ = 0;
    inbox_.clear();
    if (inbox_.capacity() > kInboxKeptCapacity) std::string().swap(inbox_);
    if (passedOver_ && socket_) {
        passedOver_ = false;
        QMetaObject::invokeMethod(
            this, [this] { emit dataArrival(index_, socket_ ? socket_->bytesAvailable() : 0); },
            Qt::QueuedConnection);
    }
}

// Raised as an event of its own once the output that held an arrival has gone down to half the
// cap, so the peer's next requests meet room for their answers, and its broadcast budget is out of
// debt, so they may cost the others again.
void SocketElement::noticeDrain() {
    if (!held_ || bytesQueued() >= kOutputCap / 2) return;
    if (budgetRate_ > 0 && budget_.overdrawn()) {
        if (!budgetWait_) {
            budgetWait_ = new QTimer(this);
            budgetWait_->setSingleShot(true);
            connect(budgetWait_, &QTimer::timeout, this, [this] { noticeDrain(); });
        }
        budgetWait_->start(static_cast<int>(std::min<qint64>(budget_.msUntilPaid() + 1, 60000)));
        return;
    }
    QMetaObject::invokeMethod(
        this,
        [this] {
            if (held_) emit drained(index_);
        },
        Qt::QueuedConnection);
}

namespace {
// The bytes of messages framed once for many connections during the current event; emptied
// when the event's output has been handed over. Each message is one a peer sent in this turn of
// the loop, a few bytes longer, so this holds about what the turn read: at most an arrival or
// two per connection, whether or not any client has room for it.
std::string sharedOutput;
constexpr size_t kSharedKeptCapacity = 1024 * 1024;
// A NUL ends a message in the peer's stream: data holding one (an AI Spy record, a line of a
// setup file) would end this message early and put what follows into the peer's stream as a
// message of its own. The peer gets what it would have read as this message.
std::string_view toFirstNul(std::string_view data) {
    if (const void* nul = std::memchr(data.data(), '\0', data.size()))
        return data.substr(0, static_cast<size_t>(static_cast<const char*>(nul) - data.data()));
    return data;
}

void frameInto(std::string& out, std::string_view command, std::string_view data) {
    out.append(command);
    out.append(data);
    out.push_back('\0');
}
} // namespace

// One posted call hands the event's output over once the event is over.
void SocketElement::postHandOver() {
    if (handOverPosted) return;
    handOverPosted = true;
    QMetaObject::invokeMethod(QCoreApplication::instance(), &SocketElement::handOverAll,
                              Qt::QueuedConnection);
}

// The checks of a send: connected, and under the cap; false when the message is dropped.
bool SocketElement::admit(size_t size) {
    // A connection that took a message this event is still connected: nothing but the event
    // loop, or a close that empties the outbox, changes that.
    if (pieces_.empty()) {
        if (state() != Connected) throw errors::wrongState();
        queuedBeforeEvent_ = socketQueued();
    }
    if (!fits(size)) {
        ++messagesDropped_;
        return false;
    }
    if (pieces_.empty()) {
        if (!gathered_) {
            gathered_ = true;
            gathering.push_back(this);
        }
        postHandOver();
    }
    return true;
}

void SocketElement::appendPiece(bool shared, size_t begin, size_t size) {
    outboxSize_ += size;
    if (!pieces_.empty()) {
        Piece& last = pieces_.back();
        if (last.shared == shared && last.begin + last.size == begin) {
            last.size += size;
            return;
        }
    }
    pieces_.push_back({shared, begin, size});
}

std::string_view SocketElement::bytesOf(const Piece& piece) const {
    return std::string_view(piece.shared ? sharedOutput : own_).substr(piece.begin, piece.size);
}

void SocketElement::send(std::string_view command, std::string_view data) {
    data = toFirstNul(data);
    const size_t size = command.size() + data.size() + 1;
    if (!admit(size)) return;
    appendPiece(false, own_.size(), size);
    frameInto(own_, command, data);
}

SocketElement::SharedMessage SocketElement::frameShared(std::string_view command, std::string_view data) {
    data = toFirstNul(data);
    const SharedMessage message{sharedOutput.size(), command.size() + data.size() + 1};
    frameInto(sharedOutput, command, data);
    postHandOver(); // which empties the shared output again
    return message;
}

void SocketElement::startSharedPiece(const SharedMessage& message) {
    if (pieces_.empty() && state() != Connected) return;
    if (admit(message.size)) appendPiece(true, message.offset, message.size);
}

void SocketElement::handOverAll() {
    handOverPosted = false;
    for (SocketElement* element : gathering)
        element->gathered_ = false;
    handOver(gathering);
    gathering.clear();
    sharedOutput.clear();
    if (sharedOutput.capacity() > kSharedKeptCapacity) std::string().swap(sharedOutput); // after a burst
}

void SocketElement::handOverOutbox() {
    SocketElement* self = this;
    handOver({&self, 1});
}

// While a socket's own queue is empty, the gathered output goes straight to the system, in one
// call for all its pieces, and the connections that write so go in one call together where the
// system allows; what does not fit joins the socket's queue, which writes it out when it can and
// keeps the order.
void SocketElement::handOver(std::span<SocketElement* const> elements) {
    struct Handed {
        SocketElement* element;
        size_t first; // its pieces in views
        size_t count;
        int write; // its entry in writes, or -1 while its socket's queue holds output
    };
    // Reused: one event loop, one hand-over at a time.
    static std::vector<std::string_view> views;
    static std::vector<Handed> handed;
    static std::vector<GatheredWrite> writes;
    views.clear();
    handed.clear();
    writes.clear();
    for (SocketElement* element : elements) {
        if (element->pieces_.empty()) continue;
        Handed entry{element, views.size(), 0, -1};
        if (element->socket_ && element->socket_->state() == QAbstractSocket::ConnectedState) {
            for (const Piece& piece : element->pieces_)
                views.push_back(element->bytesOf(piece));
            entry.count = element->pieces_.size();
            if (element->socketQueued() == 0) {
                entry.write = static_cast<int>(writes.size());
                writes.push_back({element->socket_->socketDescriptor(), {}});
            }
        }
        handed.push_back(entry);
    }
    const auto piecesOf = [](const Handed& entry) {
        return std::span(views).subspan(entry.first, entry.count);
    };
    for (const Handed& entry : handed)
        if (entry.write >= 0) writes[entry.write].pieces = piecesOf(entry);
    writeEachWithoutWaiting(writes);
    for (const Handed& entry : handed)
        entry.element->finishHandOver(piecesOf(entry), entry.write >= 0 ? writes[entry.write].taken : 0);
}

// The pieces the system did not take join the socket's queue; the outbox is empty again.
void SocketElement::finishHandOver(std::span<const std::string_view> pieces, size_t taken) {
    for (std::string_view view : pieces) {
        handedOver += static_cast<qint64>(view.size());
        const size_t skip = std::min(taken, view.size());
        taken -= skip;
        if (skip < view.size()) {
            socket_->write(view.data() + skip, static_cast<qint64>(view.size() - skip));
            socketHoldsOutput_ = true;
        }
    }
    pieces_.clear();
    own_.clear();
    outboxSize_ = 0;
    if (own_.capacity() > kOwnKeptCapacity) std::string().swap(own_); // after a burst
    if (pieces_.capacity() > kPiecesKeptCapacity) std::vector<Piece>().swap(pieces_);
    // Every connection passes here once per event it was sent to: the common case, nothing
    // held, must cost no call.
    if (held_) noticeDrain();
}

void SocketElement::close() {
    release();
    errored_ = false;
}

qint64 SocketElement::bytesQueued() const {
    return static_cast<qint64>(outboxSize_) + socketQueued();
}

// What the socket's own queue holds; it is asked only while some went there.
qint64 SocketElement::socketQueued() const {
    if (!socketHoldsOutput_ || !socket_) return 0;
    const qint64 queued = socket_->bytesToWrite();
    if (queued == 0) socketHoldsOutput_ = false;
    return queued;
}

bool SocketElement::writeOut() {
    handOverOutbox();
    if (!socket_ || socket_->state() != QAbstractSocket::ConnectedState) return false;
    socket_->flush();
    return socket_->bytesToWrite() > 0;
}

qint64 SocketElement::bytesHandedOver() {
    return handedOver;
}

bool SocketElement::writeOutClosed() {
    return ClosedConnections::instance().writeOut();
}

// Detaches the connection from this element, so no further event reaches the server, and
// lets it close gracefully on its own: output already queued still reaches the peer.
void SocketElement::release() {
    handOverOutbox();
    missed_closes::forget(*this);
    QTcpSocket* socket = socket_;
    socket_ = nullptr;
    socketHoldsOutput_ = false;
    held_ = false;
    passedOver_ = false;
    carried_.clear();
    skippingLongMessage_ = false;
    if (!socket) return;
    socket->disconnect(this);
    socket->setParent(nullptr);
    ClosedConnections::instance().adopt(socket);
}
