#pragma once
// The SIM channel (port 5557): simulators, their airplanes (numbered from the player slot
// table) and the dispatch of what SIM clients send.
#include "net/CommandRec.h"
#include "net/SlotAccept.h"
#include "server/VbList.h"

#include <QtGlobal>

#include <cstdint>
#include <string>

class Server;

struct SimRecord {
    std::string Name;
    int16_t Slot = 0;
    VbList<int16_t> Planes; // place -> airplane number, 0 = empty
};

class SimClients {
public:
    explicit SimClients(Server& server);
    void reset();

    void WS3_ConnectionRequest(int index, qintptr requestId);
    void WS3_DataArrival(int index);
    void WS3_Close(int index);
    void WS3_Error(int index);

    void DeleteSimPlayer(int16_t slot);

    const VbList<SimRecord>& SimList() const { return SimList_; }

private:
    Server& server_;
    VbList<SimRecord> SimList_;
    SlotTable SimSlotUsed{};
    VbList<CommandList> SimCommands;
};
