#pragma once
// The SIM channel (port 5557): simulators, their airplanes (numbered from the player slot
// table) and the dispatch of what SIM clients send.
//
// Two ways of finding a simulator's record are kept on purpose: SIMNEW appends, removal
// searches by slot, but ADDAIR, DELAIR and SIMLOC take the record whose position in SimList
// equals the client's slot. They agree while simulators announce themselves in slot order
// and none has left before them.
#include "net/CommandRec.h"
#include "net/SlotAccept.h"
#include "server/VbList.h"

#include <QtGlobal>

#include <cstdint>
#include <string>
#include <string_view>

class Server;

struct SimRecord {
    std::string Name;
    int16_t Slot = 0;
    VbList<int16_t> Planes; // place -> airplane number, 0 = empty
};

class SimClients {
  public:
    // The most places a simulator may announce, and all of one connection's records together:
    // place numbers are 16-bit on the wire.
    static constexpr long kMaxPlaces = 32767;

    explicit SimClients(Server& server);
    void reset();

    void WS3_ConnectionRequest(int index, qintptr requestId);
    void WS3_DataArrival(int index);
    void WS3_Drained(int index);
    void WS3_Close(int index);
    void WS3_Error(int index);

    void AddToSimList(std::string_view data, int16_t slot);
    void AddAirplaneToSim(std::string_view data, int16_t slot);
    void DeleteAirplaneFromSim(std::string_view data, int16_t slot);
    void DeleteSimPlayer(int16_t slot);
    void UpdateDisplaySIM();

    const VbList<SimRecord>& SimList() const { return SimList_; }
    // The number of simulators as the counter shows it and SIMNUM carries it.
    const std::string& Text2() const { return Text2_; }

  private:
    void dispatch(int index, const CommandRec& command);

    Server& server_;
    VbList<SimRecord> SimList_;
    SlotTable SimSlotUsed{};
    std::string Text2_ = "0";
};
