#pragma once
// The player channel (port 5555): connection slots, the registered players and their
// broadcasts, the tree view rows, and the dispatch of what players send.
#include "net/CommandRec.h"
#include "net/SlotAccept.h"
#include "server/VbList.h"

#include <QtGlobal>

#include <cstdint>
#include <string>

class Server;

struct PlayerRecord {
    std::string Name;
    std::string PlayerSetupName;
    int16_t SetupNumber = 0;
    std::string Status;
    int16_t Slot = 0;
    VbList<int16_t> Errors;
};

class PlayerSessions {
public:
    explicit PlayerSessions(Server& server);

    // Start-up: the lists back to their one unused element 0.
    void reset();

    void WS1_ConnectionRequest(int index, qintptr requestId);
    void WS1_DataArrival(int index);
    void WS1_Close(int index);
    void WS1_Error(int index);

    void DeletePlayer(int16_t slot);

    const VbList<PlayerRecord>& Players() const { return Players_; }
    // Player slots; airplane numbers of SIM clients are taken from the same table.
    SlotTable& PlayerSlotUsed() { return PlayerSlotUsed_; }

private:
    Server& server_;
    VbList<PlayerRecord> Players_;
    SlotTable PlayerSlotUsed_{};
    VbList<CommandList> PlayerCommands;
};
