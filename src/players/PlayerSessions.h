#pragma once
// The player channel (port 5555): connection slots, the registered players and their
// broadcasts, the tree view rows, the dispatch of what players send, and each player's list
// of failed setup lines.
//
// A connection and a listed player are two things: a socket gets a slot on accept; a record
// is made only when the peer registers with VALIDR. Players know each other by position in
// Players (which shifts down on removal), AWACS clients know players by slot.
#include "net/CommandRec.h"
#include "net/SlotAccept.h"
#include "server/ErrorTrap.h"
#include "server/VbList.h"

#include <QtGlobal>

#include <cstdint>
#include <string>
#include <string_view>

class Server;

struct PlayerRecord {
    std::string Name;            // the whole VALIDR payload
    std::string PlayerSetupName; // Name of the setup last fetched with GETVLO
    int16_t SetupNumber = 0;     // its number in Setups
    std::string Status;          // "-" not verified, "O" verified, "X" failed
    int16_t Slot = 0;            // the WS1 element of the player's socket
    VbList<int16_t> Errors;      // numbers of the setup lines that failed, 1..ubound
};

class PlayerSessions {
  public:
    explicit PlayerSessions(Server& server);

    // Start-up: the lists back to their one unused element 0.
    void reset();

    // Socket events of WS1.
    void WS1_ConnectionRequest(int index, qintptr requestId);
    void WS1_DataArrival(int index);
    void WS1_Drained(int index);
    void WS1_Close(int index);
    void WS1_Error(int index);

    // The player list and its broadcasts.
    void AddToPlayerList(std::string_view name, int16_t slot);
    void DeletePlayer(int16_t slot);
    void SendPlayerslist(int16_t slot);
    // "OK" marks "O", "NOK" marks "X", "?" marks "-".
    void UpdateVerifStatus(std::string_view status, int16_t slot);
    void UpdateDisplay();
    static int16_t StatusToImageNum(std::string_view status);

    // The error lists that players report and ask for.
    void PlayerErrorListRedim(int16_t slot, int16_t count);
    void PlayerErrorListAdd(std::string_view payload, int16_t slot);
    void PlayerErrorListDone(int16_t slot);
    void SendErrorListToPlayer(int16_t toSlot, int16_t position);
    std::string ErrnumToStr(int16_t position, int16_t lineNumber);

    const VbList<PlayerRecord>& Players() const { return Players_; }
    // Player slots; airplane numbers of SIM clients are taken from the same table.
    SlotTable& PlayerSlotUsed() { return PlayerSlotUsed_; }

    // One message to every listed player, each send a statement of the caller's trap.
    void toEveryPlayer(std::string_view command, const std::string& data, ErrorTrap& trap);

  private:
    // One recognised command of an arrival, under WS1_DataArrival's trap.
    void handleArrived(const CommandRec& command, int16_t slot, ErrorTrap& trap);
    void handleCommand(const CommandRec& command, int16_t slot, ErrorTrap& trap);
    void handleSetupChoice(std::string_view payload, int16_t slot, ErrorTrap& trap);
    // Position "@" Name "@" PlayerSetupName "@" Status, as PLSNEW, PLSUPD and PLSADD carry it.
    std::string describe(int position) const;
    // The first record on the slot, or none.
    PlayerRecord* firstOnSlot(int16_t slot);
    // Sends to every listed player, in position order.

    Server& server_;
    VbList<PlayerRecord> Players_;
    SlotTable PlayerSlotUsed_{};
};
