#include "relay/AwacsClients.h"

#include "net/Framing.h"
#include "server/Server.h"

AwacsClients::AwacsClients(Server& server) : server_(server) {}

void AwacsClients::reset() {
    AwacsList_.reset();
    AwacsSlotUsed.fill(false);
    AwacsCommands.reset();
}

void AwacsClients::WS2_ConnectionRequest(int index, qintptr requestId) {
    if (index != 0) return;
    ErrorTrap trap(server_.errorLog(), "WS2_ConnectionRequest");
    acceptOnLowestFreeSlot(server_.WS2(), AwacsSlotUsed, AwacsCommands, requestId, trap);
}

void AwacsClients::WS2_DataArrival(int index) {
    QByteArray data = server_.WS2().readAll(index);
    ParseInto(AwacsCommands, index, std::string_view(data.constData(), static_cast<size_t>(data.size())),
              server_.errorLog(), "ParseData2");
}

void AwacsClients::WS2_Close(int index) { DeleteAWACSPlayer(static_cast<int16_t>(index)); }

void AwacsClients::WS2_Error(int index) {
    if (server_.WS2().isLoaded(index) && server_.WS2().state(index) == SocketElement::Connected)
        server_.WS2().close(index);
}

void AwacsClients::DeleteAWACSPlayer(int16_t slot) {
    if (slot < 0 || slot >= 49 || !AwacsSlotUsed[static_cast<size_t>(slot)]) return;
    ErrorTrap trap(server_.errorLog(), "DeleteAWACSPlayer");
    trap([&] { server_.WS2().unload(slot); });
    AwacsSlotUsed[static_cast<size_t>(slot)] = false;
}
