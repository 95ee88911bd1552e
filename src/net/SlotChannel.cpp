#include "net/SlotChannel.h"

#include "net/ArrivalService.h"
#include "net/BroadcastPayer.h"
#include "net/PeerAddress.h"

#include <QDateTime>

#include <algorithm>

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
    graceTimer_.setSingleShot(true);
    QObject::connect(&graceTimer_, &QTimer::timeout, &sockets_, [this] { letGoUnregistered(); });
}

void SlotChannel::guard(AccessGate& gate, PortRole port) {
    gate_ = &gate;
    port_ = port;
    // A new grace applies to the connections waiting already, from when each was accepted.
    QObject::connect(&gate, &AccessGate::changed, &sockets_, [this] { armGrace(); });
}

void SlotChannel::serve(std::vector<Command> commands, Departures departures) {
    commands_ = std::move(commands);
    departures_ = std::move(departures);
}

// The lowest free slot is loaded and accepts. With every slot taken the scan leaves 0: loading
// element 0 fails, the accept on the listener fails, and the request is refused; the failures
// stay pending in the trap. A request the operator's rules refuse never comes to that: it is
// not taken, which closes it at once.
void SlotChannel::accept(qintptr requestId) {
    const QHostAddress address = gate_ ? peerAddressOf(requestId) : QHostAddress();
    if (gate_ && !gate_->admits(port_, address, latin(names_.peerKind))) return;
    if (gate_ && holdsItsShare(address)) {
        gate_->refuse(port_, Refusal::PerAddress, address,
                      QString("%1 connection from %2 refused: that address holds %3 of these slots already")
                          .arg(latin(names_.peerKind), address.toString())
                          .arg(gate_->settings().perAddressSlots));
        return;
    }
    ErrorTrap trap(logs_.errors, names_.connectionRequest);
    const int slot = lowestFreeSlot(slots_);
    const bool loaded = trap([&] { sockets_.load(slot); });
    slots_[static_cast<size_t>(slot)] = true;
    ConnectionTerms terms;
    if (gate_) {
        terms.silenceLimitSeconds = gate_->settings().silenceLimitSeconds;
        terms.budgetRate = budgetRate();
    }
    if (trap([&] { sockets_.accept(slot, requestId, terms); })) {
        tell(slot, "connected");
        armGrace();
    } else if (slot == 0) {
        const QString line = QString("%1 connection from %2 refused: all %3 slots are taken")
                                 .arg(latin(names_.peerKind), peerAddressOf(requestId).toString())
                                 .arg(kMaxSlot);
        if (gate_)
            gate_->refuse(port_, Refusal::Full, address, line);
        else
            qCInfo(lcAccess).noquote() << line;
    } else {
        // Taken over by nobody: the slot is free again (the listener refuses the request). An
        // element this call did not load is somebody's connection and stays.
        if (loaded) {
            sockets_.unload(slot);
            slots_[static_cast<size_t>(slot)] = false;
        }
    }
}

bool SlotChannel::holdsItsShare(const QHostAddress& address) {
    const int share = gate_->settings().perAddressSlots;
    if (share <= 0) return false;
    const QHostAddress key = shareKeyOf(address);
    int held = 0;
    for (int slot = 1; slot <= kMaxSlot; ++slot)
        if (const SocketElement* element = sockets_.find(slot); element && element->shareKey() == key) ++held;
    return held >= share;
}

void SlotChannel::markRegistered(int slot) {
    if (SocketElement* element = sockets_.find(slot)) element->setRegistered();
}

void SlotChannel::armGrace() {
    const int grace = gate_ ? gate_->settings().idleGraceSeconds : 0;
    std::optional<qint64> first;
    if (grace > 0)
        for (int slot = 1; slot <= kMaxSlot; ++slot)
            if (const SocketElement* element = sockets_.find(slot); element && !element->registered()) {
                const qint64 left = grace * 1000LL - element->msSinceAccepted();
                first = std::min(first.value_or(left), left);
            }
    if (!first) {
        graceTimer_.stop();
        return;
    }
    graceTimer_.start(static_cast<int>(std::clamp<qint64>(*first, 0, grace * 1000LL)));
}

void SlotChannel::letGoUnregistered() {
    const int grace = gate_ ? gate_->settings().idleGraceSeconds : 0;
    if (grace > 0)
        for (int slot = 1; slot <= kMaxSlot; ++slot)
            if (const SocketElement* element = sockets_.find(slot);
                element && !element->registered() && element->msSinceAccepted() >= grace * 1000LL)
                letGo(slot, QString("did not register within %1 s").arg(grace), Refusal::Idle);
    armGrace();
}

void SlotChannel::letGo(int slot, const QString& why, std::optional<Refusal> counted) {
    if (!taken(slot) || !sockets_.isLoaded(slot)) return;
    if (gate_ && counted) gate_->count(port_, *counted);
    letGoReason_ = why;
    if (departures_.closed) departures_.closed(static_cast<int16_t>(slot));
    letGoReason_.clear();
}

void SlotChannel::letGoLater(int slot, int ms, const QString& why) {
    SocketElement* element = sockets_.find(slot);
    if (!element) return;
    QTimer::singleShot(ms, element, [this, slot, element, why] {
        if (sockets_.find(slot) == element) letGo(slot, why);
    });
}

std::vector<int> SlotChannel::slotsIn(const Network& network) {
    std::vector<int> found;
    for (int slot = 1; slot <= kMaxSlot; ++slot)
        if (const SocketElement* element = sockets_.find(slot);
            element && networkHolds(network, element->peerHost()))
            found.push_back(slot);
    return found;
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
    const SocketElement* element = sockets_.find(slot);
    const QString address = element ? element->peerAddress() : QString();
    const QString who = describe(slot);
    departure_ = why;
    if (departure) departure(static_cast<int16_t>(slot));
    // A departure that keeps the slot (a failed AWACS connection is only closed) is told here,
    // under the address it had.
    if (!departure_.isEmpty() && taken(slot))
        peerEvents_.note(QString("%1 connection events from %2")
                             .arg(latin(names_.peerKind), address.left(address.lastIndexOf(':'))),
                         who + " " + why);
    departure_.clear();
}

// A VALEND in the middle of an arrival unloads the socket; the messages after it are still
// handled, and whatever they answer is dropped by the sender.
void SlotChannel::serveArrival(int slot) {
    ErrorTrap trap(logs_.errors, names_.dataArrival);
    SocketElement* element = nullptr;
    if (!trap([&] { element = &sockets_.element(slot); })) return;
    BroadcastPayer payer(*element, budgetRate());
    ::serveArrival(*element, logs_.errors, names_.parse,
                   [&](const Message& message) { handle(static_cast<int16_t>(slot), message, trap); });
    sweepAfterLeave(slot, element);
}

// The peer has read what held its requests: the rest of its arrival is handled now.
void SlotChannel::resumeArrival(int slot) {
    ErrorTrap trap(logs_.errors, names_.dataArrival);
    SocketElement* element = nullptr;
    if (!trap([&] { element = &sockets_.element(slot); })) return;
    BroadcastPayer payer(*element, budgetRate());
    ::resumeArrival(*element,
                    [&](const Message& message) { handle(static_cast<int16_t>(slot), message, trap); });
    sweepAfterLeave(slot, element);
}

// The messages after a leave in the same write are still served (their answers go nowhere), and
// may list the slot again (SIMEND, then ADDAIR): what they took for a connection that is gone is
// let go when the write is over.
void SlotChannel::sweepAfterLeave(int slot, const SocketElement* served) {
    if (sockets_.find(slot) != served && departures_.leftovers)
        departures_.leftovers(static_cast<int16_t>(slot));
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
        const QString after = " after " + connectedFor(*element);
        if (!letGoReason_.isEmpty()) {
            const QString address = element->peerAddress();
            accessEvents_.note(QString("%1 connections let go from %2")
                                   .arg(latin(names_.peerKind), address.left(address.lastIndexOf(':'))),
                               describe(slot) + " let go" + after + ": " + letGoReason_);
        } else {
            tell(slot, (!departure_.isEmpty()     ? departure_
                        : !commandServed_.empty() ? "left (" + latin(commandServed_) + ")"
                                                  : QString("let go")) +
                           after);
        }
    }
    departure_.clear();
    letGoReason_.clear();
    trap([&] { sockets_.unload(slot); });
    slots_[static_cast<size_t>(slot)] = false;
    armGrace();
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
    else if (sockets_.state(slot) == SocketElement::Connected) {
        if (trap([&] { sockets_.send(slot, command, data); }))
            BroadcastPayer::charge(sockets_.find(slot), command.size() + data.size() + 1);
    }
    if (logs_.on()) logs_.write(trafficLine(names_.sentLabel, std::to_string(slot), command, data));
}

void SlotChannel::sendToEach(std::string_view command, std::string_view data,
                             const VbList<int16_t>& receivers, bool paid) {
    if (receivers.ubound() < 1) return;
    const SocketElement::SharedMessage message = SocketElement::frameShared(command, data);
    const bool logging = logs_.on();
    size_t toOthers = 0;
    for (int k = 1; k <= receivers.ubound(); ++k) {
        const int16_t slot = receivers[k];
        // As send(): a slot that is not loaded fails its statement, one that is not connected
        // (the listener's slot 0 included) is passed over.
        if (SocketElement* element = sockets_.find(slot)) {
            element->sendShared(message);
            if (paid && !BroadcastPayer::isPayer(element)) toOthers += message.size;
        } else if (slot != 0) {
            ErrorTrap trap(logs_.errors, names_.send);
            trap.raise(errors::elementMissing(slot));
        }
        if (logging) logs_.write(trafficLine(names_.sentLabel, std::to_string(slot), command, data));
    }
    if (toOthers > 0) BroadcastPayer::charge(nullptr, toOthers);
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
