#include "players/PlayerSessions.h"

#include "net/Framing.h"
#include "server/Server.h"

PlayerSessions::PlayerSessions(Server& server) : server_(server) {}

void PlayerSessions::reset() {
    Players_.reset();
    PlayerSlotUsed_.fill(false);
    PlayerCommands.reset();
}

void PlayerSessions::WS1_ConnectionRequest(int index, qintptr requestId) {
    if (index != 0) return;
    ErrorTrap trap(server_.errorLog(), "WS1_ConnectionRequest");
    acceptOnLowestFreeSlot(server_.WS1(), PlayerSlotUsed_, PlayerCommands, requestId, trap);
}

void PlayerSessions::WS1_DataArrival(int index) {
    QByteArray data = server_.WS1().readAll(index);
    ParseInto(PlayerCommands, index, std::string_view(data.constData(), static_cast<size_t>(data.size())),
              server_.errorLog(), "ParseData");
}

void PlayerSessions::WS1_Close(int index) { DeletePlayer(static_cast<int16_t>(index)); }
void PlayerSessions::WS1_Error(int index) { DeletePlayer(static_cast<int16_t>(index)); }

void PlayerSessions::DeletePlayer(int16_t slot) {
    if (slot >= 49 || slot < 0 || !PlayerSlotUsed_[static_cast<size_t>(slot)]) return;
    ErrorTrap trap(server_.errorLog(), "DeletePlayer");
    trap([&] { server_.WS1().unload(slot); });
    PlayerSlotUsed_[static_cast<size_t>(slot)] = false;
}
