#pragma once
// One port whose connections are numbered: its listener and up to 48 slots, the reading of what
// each slot's peer sends (bounded, checked, split into messages), the command table that says
// what each message does, and the sender back to a slot. The players, the AWACS clients and the
// SIM clients each have one; the component that owns a channel's lists declares its commands
// and what happens when a connection goes, and the channel does the rest the same way for all.
#include "basics/ErrorTrap.h"
#include "basics/OperatorLog.h"
#include "basics/RepeatSummary.h"
#include "basics/RunLogs.h"
#include "basics/VbList.h"
#include "net/AccessGate.h"
#include "net/Message.h"
#include "net/SlotTable.h"
#include "net/SocketArray.h"

#include <QString>
#include <QTimer>

#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>
#include <vector>

// A channel's routine names and log labels, exactly as the error log and the traffic log show
// them.
struct ChannelNames {
    std::string_view connectionRequest; // the accept of a connection
    std::string_view dataArrival;       // serving an arrival
    std::string_view parse;             // the check of a whole arrival
    std::string_view send;              // one send to a slot
    std::string_view arrivedLabel;      // "Command arrived from ... #"
    std::string_view sentLabel;         // "Command sent to ... #"
    std::string_view peerKind;          // "player", as the operator's log and status name the peers
};

// One row of a component's command table: the command word, whether its arrival is written to
// the traffic log, and the handler. A message whose word is in no row is ignored.
template <typename Component> struct CommandRow {
    std::string_view word;
    bool logged;
    void (*handle)(Component&, int16_t slot, std::string_view data, ErrorTrap& trap);
};

// A peer may register more than once on its connection (each registration is listed, and
// answered, on its own), but not without end: past this many, a registration raises "Out of
// memory" into the routine's trap and lists nothing. Honest peers register once.
inline constexpr int kMaxListingsPerSlot = 4;
inline RuntimeError tooManyListings() {
    return {7, "Out of memory"};
}

class SlotChannel {
  public:
    struct Command {
        std::string_view word;
        bool logged;
        std::function<void(int16_t slot, std::string_view data, ErrorTrap& trap)> handle;
    };
    // What the owning component does when a slot's connection closes or fails; both may come
    // for the same slot, so the second must find the slot free.
    struct Departures {
        std::function<void(int16_t slot)> closed;
        std::function<void(int16_t slot)> failed;
        // What messages after a leave in the same write took for the slot, let go.
        std::function<void(int16_t slot)> leftovers;
    };

    // A channel with its own slot table, or one sharing a table that numbers something else too.
    SlotChannel(const ChannelNames& names, RunLogs logs);
    SlotChannel(const ChannelNames& names, RunLogs logs, SlotTable& shared);
    SlotChannel(const SlotChannel&) = delete;
    SlotChannel& operator=(const SlotChannel&) = delete;

    // The owning component's commands and departures: from here on its events are served.
    template <typename Component, size_t N>
    void serve(Component& component, const CommandRow<Component> (&rows)[N], Departures departures) {
        std::vector<Command> commands;
        for (const CommandRow<Component>& row : rows)
            commands.push_back(
                {row.word, row.logged,
                 [&component, handle = row.handle](int16_t slot, std::string_view data, ErrorTrap& trap) {
                     handle(component, slot, data, trap);
                 }});
        serve(std::move(commands), std::move(departures));
    }
    void serve(std::vector<Command> commands, Departures departures);

    // The operator's rules for this port: bans and allow lists at accept, one address's share of
    // the slots, the grace for registering, the broadcast budget and the silence limit of each
    // connection. Without them (a channel of its own in a test) anyone may hold any slot.
    void guard(AccessGate& gate, PortRole port);

    void listen(const QHostAddress& address, quint16 port) {
        sockets_.listen(address, port, names_.peerKind);
    }
    void closeListener() { sockets_.closeListener(); }
    quint16 port() const { return sockets_.port(); }

    // Start-up: every slot free.
    void reset() { slots_.fill(false); }
    bool taken(int slot) const { return slotTaken(slots_, slot); }
    // The slot's connection goes (unloaded under the caller's trap) and the slot is free again.
    void release(int16_t slot, ErrorTrap& trap);
    // The slot's connection is closed if it is open or failed; the slot stays taken.
    void closeConnection(int slot);
    // The slot's peer said who it is (VALIDR, NAWACS, SIMNEW): the grace for that ends.
    void markRegistered(int slot);
    // The server ends the slot's connection as a leave: the owning component removes it as after
    // a close, and the operator's log tells why ("kicked by the operator"); the gate counts it
    // under `counted`, if given.
    void letGo(int slot, const QString& why, std::optional<Refusal> counted = std::nullopt);
    // letGo() after `ms`, unless that connection has gone by then.
    void letGoLater(int slot, int ms, const QString& why);
    // The slots whose peers are inside the network, in slot order.
    std::vector<int> slotsIn(const Network& network);

    // One whole message to a slot: sent only when it is connected, logged either way, and its
    // caller learns nothing.
    void send(std::string_view command, std::string_view data, int16_t slot);
    // send() to each slot of the list (elements 1..ubound) in turn, the message framed once for
    // all of them. What goes to others than the connection being served is paid from its
    // broadcast budget (SendBudget).
    void sendToEach(std::string_view command, std::string_view data, const VbList<int16_t>& receivers) {
        sendToEach(command, data, receivers, true);
    }
    // sendToEach() of a relayed position, which nobody pays for: its output follows its input.
    void relayToEach(std::string_view command, std::string_view data, const VbList<int16_t>& receivers) {
        sendToEach(command, data, receivers, false);
    }

    // Shutdown: "DISCON" to every connected slot, in slot order, each connection closed and
    // unloaded, nothing run in between.
    void disconnectAll(ErrorTrap& trap);
    // Writes what the open connections have queued; true while some of it is still waiting.
    bool writeOut();

    SocketArray& sockets() { return sockets_; }
    const ChannelNames& names() const { return names_; }
    // "player connection 3 (192.168.1.20:50412)", as the operator's log names a connection.
    QString describe(int slot);
    // One line of the operator's log about the slot's connection: "<describe> <what>". A flood
    // from one address is summarised.
    void tell(int slot, const QString& what);

  private:
    SlotChannel(const ChannelNames& names, RunLogs logs, SlotTable* shared);
    void accept(qintptr requestId);
    // Whether the address already holds its share of this port's slots.
    bool holdsItsShare(const QHostAddress& address);
    void sendToEach(std::string_view command, std::string_view data, const VbList<int16_t>& receivers,
                    bool paid);
    // The grace for registering: the timer is set for the first unregistered connection to run
    // out of it, which is then let go.
    void armGrace();
    void letGoUnregistered();
    qint64 budgetRate() const { return gate_ ? gate_->settings().broadcastBytesPerSecond : 0; }
    void serveArrival(int slot);
    void resumeArrival(int slot);
    void handle(int16_t slot, const Message& message, ErrorTrap& trap);
    void sweepAfterLeave(int slot, const SocketElement* served);
    // A departure event of the slot's connection, with why it ended for the operator's log.
    void depart(int slot, const std::function<void(int16_t)>& departure, const QString& why);

    // Why a connection being released goes: the departure event being served, the server's
    // letting it go, else the command.
    QString departure_;
    QString letGoReason_;
    std::string_view commandServed_;
    RepeatSummary peerEvents_{lcPeers};
    RepeatSummary accessEvents_{lcAccess};
    AccessGate* gate_ = nullptr;
    PortRole port_ = PortRole::Players;
    QTimer graceTimer_;
    ChannelNames names_;
    RunLogs logs_;
    SlotTable ownSlots_{};
    SlotTable& slots_;
    SocketArray sockets_;
    std::vector<Command> commands_;
    Departures departures_;
};
