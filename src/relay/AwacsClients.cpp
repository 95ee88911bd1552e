#include "relay/AwacsClients.h"

#include "net/ArrivalService.h"
#include "net/Text.h"
#include "players/PlayerSessions.h"
#include "relay/AirplaneText.h"
#include "relay/SimClients.h"
#include "server/Server.h"

AwacsClients::AwacsClients(Server& server) : server_(server) {}

void AwacsClients::reset() {
    AwacsList_.reset();
    AwacsSlotUsed.fill(false);
    Text1_ = text::number(AwacsList_.ubound());
}

void AwacsClients::WS2_ConnectionRequest(int index, qintptr requestId) {
    if (index != 0) return;
    ErrorTrap trap(server_.errorLog(), "WS2_ConnectionRequest");
    acceptOnLowestFreeSlot(server_.WS2(), AwacsSlotUsed, requestId, trap);
}

void AwacsClients::WS2_DataArrival(int index) {
    ErrorTrap trap(server_.errorLog(), "WS2_DataArrival");
    SocketElement* element = nullptr;
    if (!trap([&] { element = &server_.WS2().element(index); })) return;
    serveArrival(*element, server_.errorLog(), "ParseData2",
                 [&](const CommandRec& command) { handleArrived(command, static_cast<int16_t>(index)); });
}

void AwacsClients::WS2_Drained(int index) {
    ErrorTrap trap(server_.errorLog(), "WS2_DataArrival");
    SocketElement* element = nullptr;
    if (!trap([&] { element = &server_.WS2().element(index); })) return;
    resumeArrival(*element,
                  [&](const CommandRec& command) { handleArrived(command, static_cast<int16_t>(index)); });
}

void AwacsClients::handleArrived(const CommandRec& command, int16_t slot) {
    static constexpr std::string_view kLabel = "Command arrived from AWACS Client #";
    if (command.Command == "NAWACS") {
        server_.logArrival(kLabel, slot, command);
        AddToAWACSList(slot);
    } else if (command.Command == "AWAEND") {
        server_.logArrival(kLabel, slot, command);
        DeleteAWACSPlayer(slot);
    }
}

void AwacsClients::WS2_Close(int index) {
    DeleteAWACSPlayer(static_cast<int16_t>(index));
}

// The connection is closed but the client stays listed and counted: later sends to it are
// dropped by the sender. A connection that failed is in its error state rather than
// connected, and is closed all the same.
void AwacsClients::WS2_Error(int index) {
    SocketArray& ws2 = server_.WS2();
    if (!ws2.isLoaded(index) || index == 0) return;
    const int state = ws2.state(index);
    if (state == SocketElement::Connected || state == SocketElement::Error) ws2.close(index);
}

void AwacsClients::AddToAWACSList(int16_t slot) {
    ErrorTrap trap(server_.errorLog(), "AddToAWACSList");
    // A second NAWACS lists the client again: it gets every message once per listing.
    int listed = 0;
    for (int k = 1; k <= AwacsList_.ubound(); ++k)
        listed += AwacsList_[k] == slot;
    if (!trap.require(listed < kMaxListingsPerSlot, tooManyListings)) return;
    AwacsList_.append(slot);
    UpdateDisplayAWACS();

    // The picture so far, to the newcomer only: players first, then the simulators' airplanes.
    Senders& senders = server_.senders();
    const auto& players = server_.players().Players();
    for (int k = 1; k <= players.ubound(); ++k)
        trap([&] {
            senders.SendCommand2("NEWCLT", playerAnnouncement(players[k].Slot, players[k].Name), slot);
        });
    const auto& sims = server_.sims().SimList();
    for (int s = 1; s <= sims.ubound(); ++s)
        for (int j = 1; j <= sims[s].Planes.ubound(); ++j)
            trap([&] {
                const int16_t n = sims[s].Planes[j];
                if (n == 0) return;
                senders.SendCommand2("NEWCLT", airplaneAnnouncement(n, sims[s].Name), slot);
            });
}

void AwacsClients::DeleteAWACSPlayer(int16_t slot) {
    if (slot < 0 || slot > SocketArray::kMaxIndex || !AwacsSlotUsed[static_cast<size_t>(slot)]) return;
    ErrorTrap trap(server_.errorLog(), "DeleteAWACSPlayer");
    trap([&] { server_.WS2().unload(slot); });
    AwacsSlotUsed[static_cast<size_t>(slot)] = false;

    AwacsList_.removeWhere([&](int16_t listed) { return listed == slot; });
    UpdateDisplayAWACS();
}

void AwacsClients::UpdateDisplayAWACS() {
    ErrorTrap trap(server_.errorLog(), "UpdateDisplayAWACS");
    Text1_ = text::number(AwacsList_.ubound());
    server_.display().showAwacsCount(QString::fromStdString(Text1_));
    server_.players().toEveryPlayer("AWANUM", Text1_, trap);
}
