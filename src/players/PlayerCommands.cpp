// What players send on port 5555. The player drives the validation exchange; the server
// imposes no order and takes any command at any time:
//   VALIDR name -> listed with mark "-"; GETLST -> the player list; GETVLA -> the setup list
//   (mark back to "-"); GETVLO n -> setup n's lines; ERRRDM/ERRADD/ERRDON -> the failed lines;
//   VERFOK/VERNOK -> mark "O"/"X"; ERRGET p -> player p's reasons as texts; VALEND -> gone.
#include "players/PlayerSessions.h"

#include "net/Framing.h"
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

void PlayerSessions::WS1_DataArrival(int index) {
    ErrorTrap trap(server_.errorLog(), "WS1_DataArrival");
    const int16_t slot = static_cast<int16_t>(index);
    QByteArray data;
    trap([&] { data = server_.WS1().readAll(index); });
    ParseInto(PlayerCommands, index, std::string_view(data.constData(), static_cast<size_t>(data.size())),
              server_.errorLog(), "ParseData");
    int count = 0;
    trap([&] { count = PlayerCommands[index].ubound(); });
    // A VALEND in the middle of a batch unloads the socket; the commands after it are still
    // handled, and whatever they answer is dropped by the sender.
    for (int i = 1; i <= count; ++i) {
        CommandRec command;
        if (!trap([&] { command = PlayerCommands[index][i]; })) continue;
        if (!isRecognised(command.Command)) continue; // unknown commands are ignored silently
        if (command.Command != "GETLST") server_.logArrival(kArrivalLabel, index, command);
        handleCommand(command, slot, trap);
    }
}

void PlayerSessions::handleCommand(const CommandRec& command, int16_t slot, ErrorTrap& trap) {
    const std::string& name = command.Command;
    const std::string& payload = command.Data;
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
        trap([&] { PlayerErrorListRedim(slot, text::leadingInt16(payload)); });
    } else if (name == "ERRADD") {
        PlayerErrorListAdd(payload, slot);
    } else if (name == "ERRDON") {
        PlayerErrorListDone(slot);
    } else if (name == "ERRGET") {
        trap([&] { SendErrorListToPlayer(slot, text::leadingInt16(payload)); });
    }
}

// GETVLO: the setup's lines go to the player, and every record on the slot notes the choice.
// Nobody is told and the tree view keeps its text until the next status change redraws it.
void PlayerSessions::handleSetupChoice(const std::string& payload, int16_t slot, ErrorTrap& trap) {
    const double number = text::leadingNumber(payload);
    trap([&] { server_.setups().SendSetup(text::toInt16(number), slot); });
    for (int i = 1; i <= Players_.ubound(); ++i) {
        PlayerRecord& player = Players_[i];
        if (player.Slot != slot) continue;
        // A number past the catalogue keeps the old name; 0 names the empty element 0, "".
        trap([&] { player.PlayerSetupName = server_.setups().Setups()[text::toInt32(number)].Name; });
        trap([&] { player.SetupNumber = text::toInt16(number); });
    }
}
