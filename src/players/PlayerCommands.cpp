// What players send on port 5555. The player drives the validation exchange; the server
// imposes no order and takes any command at any time:
//   VALIDR name -> listed with mark "-"; GETLST -> the player list; GETVLA -> the setup list
//   (mark back to "-"); GETVLO n -> setup n's lines; ERRRDM/ERRADD/ERRDON -> the failed lines;
//   VERFOK/VERNOK -> mark "O"/"X"; ERRGET p -> player p's reasons as texts; VALEND -> gone.
#include "players/PlayerSessions.h"

#include "basics/Text.h"
#include "relay/AwacsClients.h"
#include "setups/SetupCatalogue.h"

namespace {

constexpr ChannelNames kNames{
    "WS1_ConnectionRequest",         "WS1_DataArrival",          "ParseData", "SendCommand",
    "Command arrived from Player #", "Command sent to Player #", "player"};

using Data = std::string_view;

// A new command is one row here and one function on PlayerSessions. GETLST, asked for all
// evening, is the one arrival not written to the traffic log.
constexpr CommandRow<PlayerSessions> kCommands[] = {
    {"GETLST", false, [](PlayerSessions& p, int16_t slot, Data, ErrorTrap&) { p.sendPlayerList(slot); }},
    {"VERFOK", true,
     [](PlayerSessions& p, int16_t slot, Data, ErrorTrap&) { p.markVerification("OK", slot); }},
    {"VERNOK", true,
     [](PlayerSessions& p, int16_t slot, Data, ErrorTrap&) { p.markVerification("NOK", slot); }},
    {"F4LOCA", true,
     [](PlayerSessions& p, int16_t slot, Data data, ErrorTrap&) { p.relayPosition(data, slot); }},
    {"VALIDR", true, [](PlayerSessions& p, int16_t slot, Data data, ErrorTrap&) { p.addPlayer(data, slot); }},
    {"GETVLA", true, [](PlayerSessions& p, int16_t slot, Data, ErrorTrap&) { p.sendSetupList(slot); }},
    {"GETVLO", true,
     [](PlayerSessions& p, int16_t slot, Data data, ErrorTrap& trap) { p.chooseSetup(data, slot, trap); }},
    {"VALEND", true, [](PlayerSessions& p, int16_t slot, Data, ErrorTrap&) { p.dropPlayer(slot); }},
    // Free text from the player's program: the arrival line is all it gets.
    {"VLERRO", true, [](PlayerSessions&, int16_t, Data, ErrorTrap&) {}},
    {"ERRRDM", true,
     [](PlayerSessions& p, int16_t slot, Data data, ErrorTrap& trap) {
         int16_t count = 0;
         if (trap.take(text::int16Of(text::leadingNumber(data)), count)) p.resizeFailedLines(slot, count);
     }},
    {"ERRADD", true,
     [](PlayerSessions& p, int16_t slot, Data data, ErrorTrap&) { p.addFailedLine(data, slot); }},
    // The list is complete as the ERRADDs left it.
    {"ERRDON", true, [](PlayerSessions&, int16_t, Data, ErrorTrap&) {}},
    {"ERRGET", true,
     [](PlayerSessions& p, int16_t slot, Data data, ErrorTrap& trap) {
         int16_t position = 0;
         if (trap.take(text::int16Of(text::leadingNumber(data)), position)) p.sendFailedLines(slot, position);
     }},
};

} // namespace

const ChannelNames& PlayerSessions::channelNames() {
    return kNames;
}

void PlayerSessions::serveCommands() {
    channel_.serve(*this, kCommands,
                   {[this](int16_t slot) { dropPlayer(slot); }, [this](int16_t slot) { dropPlayer(slot); },
                    [this](int16_t slot) { forgetPlayer(slot); }});
}

void PlayerSessions::relayPosition(std::string_view data, int16_t slot) {
    awacs_.relayPlayerPosition(data, slot);
}

// GETVLO: the setup's lines go to the player, and every record on the slot notes the choice.
// Nobody is told and the status window keeps its text until the next mark change redraws it.
void PlayerSessions::chooseSetup(std::string_view payload, int16_t slot, ErrorTrap& trap) {
    const double number = text::leadingNumber(payload);
    const Checked<int16_t> asInt16 = text::int16Of(number);
    int16_t setupNumber = 0;
    if (trap.take(asInt16, setupNumber)) sendSetupLines(setupNumber, slot);
    const Checked<int32_t> asInt32 = text::int32Of(number);
    for (int i = 1; i <= roster_.ubound(); ++i) {
        PlayerRecord& player = roster_[i];
        if (player.slot != slot) continue;
        // A number past the catalogue keeps the old name; 0 names the empty element 0, "".
        int32_t position = 0;
        if (trap.take(asInt32, position)) {
            const SetupRecord* setup = setups_.list().find(position);
            if (trap.require(setup != nullptr, errors::subscriptOutOfRange)) player.setupName = setup->name;
        }
        trap.take(asInt16, player.setupNumber);
    }
}
