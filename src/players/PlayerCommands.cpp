// What players send on port 5555. The player drives the validation exchange; the server
// imposes no order and takes any command at any time:
//   VALIDR name -> listed with mark "-"; GETLST -> the player list; GETVLA -> the setup list
//   (mark back to "-"); GETVLO n -> setup n's lines; ERRRDM/ERRADD/ERRDON -> the failed lines;
//   VERFOK/VERNOK -> mark "O"/"X"; ERRGET p -> player p's reasons as texts; VALEND -> gone.
#include "players/PlayerSessions.h"

#include "net/ArrivalService.h"
#include "net/Text.h"
#include "relay/AwacsClients.h"
#include "server/Server.h"
#include "setups/SetupCatalogue.h"

namespace {

constexpr std::string_view kArrivalLabel = "Command arrived from Player #";

// The command names in the order they are compared; GETLST is the one not logged.
constexpr std::string_view kRecognised[] = {"GETLST", "VERFOK", "VERNOK", "F4LOCA", "VALIDR",
                                            "GETVLA", "GETVLO", "VALEND", "VLERRO", "ERRRDM",
                                            "ERRADD", "ERRDON", "ERRGET"};

bool isRecognised(std::string_view command) {
    for (std::string_view name : kRecognised)
        if (command == name) return true;
    return false;
}

} // namespace

// A VALEND in the middle of a batch unloads the socket; the commands after it are still
// handled, and whatever they answer is dropped by the sender.
void PlayerSessions::WS1_DataArrival(int index) {
    ErrorTrap trap(server_.errorLog(), "WS1_DataArrival");
    SocketElement* element = nullptr;
    if (!trap([&] { element = &server_.WS1().element(index); })) return;
    serveArrival(*element, server_.errorLog(), "ParseData", [&](const CommandRec& command) {
        handleArrived(command, static_cast<int16_t>(index), trap);
    });
}

// The player has read what held its requests: the rest of its arrival is handled now.
void PlayerSessions::WS1_Drained(int index) {
    ErrorTrap trap(server_.errorLog(), "WS1_DataArrival");
    SocketElement* element = nullptr;
    if (!trap([&] { element = &server_.WS1().element(index); })) return;
    resumeArrival(*element, [&](const CommandRec& command) {
        handleArrived(command, static_cast<int16_t>(index), trap);
    });
}

void PlayerSessions::handleArrived(const CommandRec& command, int16_t slot, ErrorTrap& trap) {
    if (!isRecognised(command.Command)) return; // unknown commands are ignored silently
    if (command.Command != "GETLST") server_.logArrival(kArrivalLabel, slot, command);
    handleCommand(command, slot, trap);
}

void PlayerSessions::handleCommand(const CommandRec& command, int16_t slot, ErrorTrap& trap) {
    const std::string_view name = command.Command;
    const std::string_view payload = command.Data;
    if (name == "GETLST") {
        SendPlayerslist(slot);
    } else if (name == "VERFOK") {
        UpdateVerifStatus("OK", slot);
    } else if (name == "VERNOK") {
        UpdateVerifStatus("NOK", slot);
    } else if (name == "F4LOCA") {
        trap([&] { server_.awacs().SendToAwacsClients(payload, slot); });
    } else if (name == "VALIDR") {
        AddToPlayerList(payload, slot);
    } else if (name == "GETVLA") {
        server_.setups().SendSetupList(slot);
    } else if (name == "GETVLO") {
        handleSetupChoice(payload, slot, trap);
    } else if (name == "VALEND") {
        DeletePlayer(slot);
    } else if (name == "VLERRO") {
        // Free text from the player's program: the arrival line above is all it gets.
    } else if (name == "ERRRDM") {
        int16_t count = 0;
        if (trap.take(text::int16Of(text::leadingNumber(payload)), count)) PlayerErrorListRedim(slot, count);
    } else if (name == "ERRADD") {
        PlayerErrorListAdd(payload, slot);
    } else if (name == "ERRDON") {
        PlayerErrorListDone(slot);
    } else if (name == "ERRGET") {
        int16_t position = 0;
        if (trap.take(text::int16Of(text::leadingNumber(payload)), position))
            SendErrorListToPlayer(slot, position);
    }
}

// GETVLO: the setup's lines go to the player, and every record on the slot notes the choice.
// Nobody is told and the tree view keeps its text until the next status change redraws it.
void PlayerSessions::handleSetupChoice(std::string_view payload, int16_t slot, ErrorTrap& trap) {
    const double number = text::leadingNumber(payload);
    const Checked<int16_t> asInt16 = text::int16Of(number);
    int16_t setupNumber = 0;
    if (trap.take(asInt16, setupNumber)) server_.setups().SendSetup(setupNumber, slot);
    const Checked<int32_t> asInt32 = text::int32Of(number);
    for (int i = 1; i <= Players_.ubound(); ++i) {
        PlayerRecord& player = Players_[i];
        if (player.Slot != slot) continue;
        // A number past the catalogue keeps the old name; 0 names the empty element 0, "".
        int32_t position = 0;
        if (trap.take(asInt32, position)) {
            const SetupRecord* setup = server_.setups().Setups().find(position);
            if (trap.require(setup != nullptr, errors::subscriptOutOfRange))
                player.PlayerSetupName = setup->Name;
        }
        trap.take(asInt16, player.SetupNumber);
    }
}
