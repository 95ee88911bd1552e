#include "net/SlotChannel.h"

#include "net/ArrivalService.h"
#include "net/PeerAddress.h"

#include <QDateTime>

namespace {
QLatin1String latin(std::string_view s) {
    return QLatin1String(s.data(), static_cast<qsizetype>(s.size()));
}

QString connectedFor(const SocketElement& element) {
    const qint64 seconds = element.connectedSince().secsTo(QDateTime::currentDateTime());
    return QString("%1:%2:%3")
        .arg(seconds / 3600, 2, 10, QChar('0'))
        .arg(seconds / 60 % 60, 2, 10, QChar('0'))
        .arg(seconds % 60, 2, 10, QChar('0'));
}
} // namespace

SlotChannel::SlotChannel(const ChannelNames& names, RunLogs logs) : SlotChannel(names, logs, nullptr) {}

SlotChannel::SlotChannel(const ChannelNames& names, RunLogs logs, SlotTable& shared)
    : SlotChannel(names, logs, &shared) {}

SlotChannel::SlotChannel(const ChannelNames& names, RunLogs logs, SlotTable* shared)
    : names_(names), logs_(logs), slots_(shared ? *shared : ownSlots_) {
    QObject::connect(&sockets_, &SocketArray::connectionRequest, &sockets_, [this](int index, qintptr id) {
        if (index == 0) accept(id);
    });
    QObject::connect(&sockets_, &SocketArray::dataArrival, &sockets_,
                     [this](int index, qint64) { serveArrival(index); });
    QObject::connect(&sockets_, &SocketArray::drained, &sockets_,
                     [this](int index) { resumeArrival(index); });
    QObject::connect(&sockets_, &SocketArray::closed, &sockets_,
                     [this](int index) { depart(index, departures_.closed, "closed by the peer"); });
    QObject::connect(&sockets_, &SocketArray::error, &sockets_,
                     [this](int index, int, const QString& description) {
                         depart(index, departures_.failed, "failed (" + description + ")");
                     });
}

void SlotChannel::serve(std::vector<Command> commands, Departures departures) {
    commands_ = std::move(commands);
    departures_ = std::move(departures);
}

// The lowest free slot is loaded and accepts. With every slot taken the scan leaves 0: loading
// element 0 fails, the accept on the listener fails, and the request is refused; the failures
// stay pending in the trap.
void SlotChannel::accept(qintptr requestId) {
    ErrorTrap trap(logs_.errors, names_.connectionRequest);
    const int slot = lowestFreeSlot(slots_);
    trap([&] { sockets_.load(slot); });
    slots_[static_cast<size_t>(slot)] = true;
    if (trap([&] { sockets_.accept(slot, requestId); }))
        tell(slot, "connected");
    else if (slot == 0)
        refusals_.note(QString("%1 connections refused").arg(latin(names_.peerKind)),
                       QString("%1 connection from %2 refused: all %3 slots are taken")
                           .arg(latin(names_.peerKind), peerAddressOf(requestId).toString())
                           .arg(kMaxSlot));
}

void SlotChannel::tell(int slot, const QString& what) {
    const SocketElement* element = sockets_.find(slot);
    const QString address = element ? element->peerAddress() : QString();
    peerEvents_.note(QString("%1 connection events from %2")
                         .arg(latin(names_.peerKind), address.left(address.lastIndexOf(':'))),
                     describe(slot) + " " + what);
}

QString SlotChannel::describe(int slot) {
    QString text = QString("%1 connection %2").arg(latin(names_.peerKind)).arg(slot);
    if (SocketElement* element = sockets_.find(slot); element && !element->peerAddress().isEmpty())
        text += " (" + element->peerAddress() + ")";
    return text;
}

void SlotChannel::depart(int slot, const std::function<void(int16_t)>& departure, const QString& why) {
    departure_ = why;
    if (departure) departure(static_cast<int16_t>(slot));
    // A departure that keeps the slot (a failed AWACS connection is only closed) is told here.
    if (!departure_.isEmpty() && taken(slot)) tell(slot, why);
    departure_.clear();
}

// A VALEND in the middle of an arrival unloads the socket; the messages after it are still
// handled, and whatever they answer is dropped by the sender.
void SlotChannel::serveArrival(int slot) {
    ErrorTrap trap(logs_.errors, names_.dataArrival);
    SocketElement* element = nullptr;
    if (!trap([&] { element = &sockets_.element(slot); })) return;
    ::serveArrival(*element, logs_.errors, names_.parse,
                   [&](const Message& message) { handle(static_cast<int16_t>(slot), message, trap); });
}

// The peer has read what held its requests: the rest of its arrival is handled now.
void SlotChannel::resumeArrival(int slot) {
    ErrorTrap trap(logs_.errors, names_.dataArrival);
    SocketElement* element = nullptr;
    if (!trap([&] { element = &sockets_.element(slot); })) return;
    ::resumeArrival(*element,
                    [&](const Message& message) { handle(static_cast<int16_t>(slot), message, trap); });
}

void SlotChannel::handle(int16_t slot, const Message& message, ErrorTrap& trap) {
    for (const Command& command : commands_) {
        if (command.word != message.command) continue;
        if (command.logged && logs_.on())
            logs_.write(
                trafficLine(names_.arrivedLabel, std::to_string(slot), message.command, message.data));
        commandServed_ = command.word;
        command.handle(slot, message.data, trap);
        commandServed_ = {};
        return;
    }
}

void SlotChannel::release(int16_t slot, ErrorTrap& trap) {
    if (SocketElement* element = sockets_.find(slot)) {
        const QString why = !departure_.isEmpty()     ? departure_
                            : !commandServed_.empty() ? "left (" + latin(commandServed_) + ")"
                                                      : QString("let go");
        tell(slot, why + " after " + connectedFor(*element));
    }
    departure_.clear();
    trap([&] { sockets_.unload(slot); });
    slots_[static_cast<size_t>(slot)] = false;
}

void SlotChannel::closeConnection(int slot) {
    if (slot == 0 || !sockets_.isLoaded(slot)) return;
    const int state = sockets_.state(slot);
    if (state == SocketElement::Connected || state == SocketElement::Error) sockets_.close(slot);
}

void SlotChannel::send(std::string_view command, std::string_view data, int16_t slot) {
    ErrorTrap trap(logs_.errors, names_.send);
    // A slot whose connection has gone (answers to the messages after a VALEND, a record left
    // on a closed slot) fails its statement without unwinding: peers can make this happen at will.
    if (!sockets_.isLoaded(slot))
        trap.raise(errors::elementMissing(slot));
    else if (sockets_.state(slot) == SocketElement::Connected)
        trap([&] { sockets_.send(slot, command, data); });
    if (logs_.on()) logs_.write(trafficLine(names_.sentLabel, std::to_string(slot), command, data));
}

void SlotChannel::sendToEach(std::string_view command, std::string_view data,
                             const VbList<int16_t>& receivers) {
    if (receivers.ubound() < 1) return;
    const SocketElement::SharedMessage message = SocketElement::frameShared(command, data);
    const bool logging = logs_.on();
    for (int k = 1; k <= receivers.ubound(); ++k) {
        const int16_t slot = receivers[k];
        // As send(): a slot that is not loaded fails its statement, one that is not connected
        // (the listener's slot 0 included) is passed over.
        if (SocketElement* element = sockets_.find(slot)) {
            element->sendShared(message);
        } else if (slot != 0) {
            ErrorTrap trap(logs_.errors, names_.send);
            trap.raise(errors::elementMissing(slot));
        }
        if (logging) logs_.write(trafficLine(names_.sentLabel, std::to_string(slot), command, data));
    }
}

void SlotChannel::disconnectAll(ErrorTrap& trap) {
    for (int slot : sockets_.loadedIndices()) {
        trap([&] {
            if (sockets_.state(slot) == SocketElement::Connected)
                send("DISCON", "", static_cast<int16_t>(slot));
        });
        trap([&] { sockets_.close(slot); });
        trap([&] { sockets_.unload(slot); });
    }
}

bool SlotChannel::writeOut() {
    bool pending = false;
    for (int slot : sockets_.loadedIndices())
        pending = sockets_.element(slot).writeOut() || pending;
    return pending;
}
