#pragma once
// The AWACS channel (port 5556): connection slots, the list of registered AWACS clients that
// every flight-picture message goes to, and the replay of the picture to a newcomer.
#include "net/CommandRec.h"
#include "net/SlotAccept.h"
#include "server/VbList.h"

#include <QtGlobal>

#include <cstdint>
#include <string>

class Server;

class AwacsClients {
public:
    explicit AwacsClients(Server& server);
    void reset();

    void WS2_ConnectionRequest(int index, qintptr requestId);
    void WS2_DataArrival(int index);
    void WS2_Close(int index);
    void WS2_Error(int index);

    void DeleteAWACSPlayer(int16_t slot);

    // The relays to every registered client, at once, one message per report and client:
    // a player's F4LOCA, a simulator's SIMLOC, and converted AI Spy text.
    void SendToAwacsClients(const std::string& data, int16_t slot);
    void SendToAwacsClients2(const std::string& data, int16_t slot);
    void SendToAwacsClients4(const std::string& text);

    // The WS2 slots of the registered clients, elements 1..ubound in order of registration.
    const VbList<int16_t>& AwacsList() const { return AwacsList_; }

private:
    Server& server_;
    VbList<int16_t> AwacsList_;
    SlotTable AwacsSlotUsed{};
    VbList<CommandList> AwacsCommands;
};
