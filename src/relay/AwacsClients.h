#pragma once
// The AWACS channel (port 5556): connection slots, the list of registered AWACS clients that
// every flight-picture message goes to, and the replay of the picture to a newcomer.
#include "net/CommandRec.h"
#include "net/SlotAccept.h"
#include "server/VbList.h"

#include <QtGlobal>

#include <cstdint>
#include <string>
#include <string_view>

class Server;

class AwacsClients {
  public:
    explicit AwacsClients(Server& server);
    void reset();

    void WS2_ConnectionRequest(int index, qintptr requestId);
    void WS2_DataArrival(int index);
    void WS2_Drained(int index);
    void WS2_Close(int index);
    void WS2_Error(int index);

    void AddToAWACSList(int16_t slot);
    void DeleteAWACSPlayer(int16_t slot);
    void UpdateDisplayAWACS();

    // The relays to every registered client, at once, one message per report and client:
    // a player's F4LOCA, a simulator's SIMLOC, and converted AI Spy text.
    void SendToAwacsClients(std::string_view data, int16_t slot);
    void SendToAwacsClients2(std::string_view data, int16_t slot);
    void SendToAwacsClients4(std::string_view text);

    // The WS2 slots of the registered clients, elements 1..ubound in order of registration.
    const VbList<int16_t>& AwacsList() const { return AwacsList_; }
    // The number of registered clients as the counter shows it and AWANUM carries it.
    const std::string& Text1() const { return Text1_; }

    // One message to every listed client, in list order, each send a statement of the caller's trap.
    void toEveryClient(std::string_view command, std::string_view data, ErrorTrap& trap);

  private:
    void handleArrived(const CommandRec& command, int16_t slot);

    Server& server_;
    VbList<int16_t> AwacsList_;
    SlotTable AwacsSlotUsed{};
    std::string Text1_ = "0";
};
