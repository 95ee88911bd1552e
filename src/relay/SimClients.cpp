#include "relay/SimClients.h"

#include "net/Framing.h"
#include "server/Server.h"

SimClients::SimClients(Server& server) : server_(server) {}

void SimClients::reset() {
    SimList_.reset();
    SimSlotUsed.fill(false);
    SimCommands.reset();
}

void SimClients::WS3_ConnectionRequest(int index, qintptr requestId) {
    if (index != 0) return;
    ErrorTrap trap(server_.errorLog(), "WS3_ConnectionRequest");
    acceptOnLowestFreeSlot(server_.WS3(), SimSlotUsed, SimCommands, requestId, trap);
}

void SimClients::WS3_DataArrival(int index) {
    QByteArray data = server_.WS3().readAll(index);
    ParseInto(SimCommands, index, std::string_view(data.constData(), static_cast<size_t>(data.size())),
              server_.errorLog(), "ParseData3");
}

void SimClients::WS3_Close(int index) { DeleteSimPlayer(static_cast<int16_t>(index)); }
void SimClients::WS3_Error(int index) { DeleteSimPlayer(static_cast<int16_t>(index)); }

void SimClients::DeleteSimPlayer(int16_t slot) {
    if (slot < 0 || slot >= 49 || !SimSlotUsed[static_cast<size_t>(slot)]) return;
    ErrorTrap trap(server_.errorLog(), "DeleteSimPlayer");
    trap([&] { server_.WS3().unload(slot); });
    SimSlotUsed[static_cast<size_t>(slot)] = false;
}
