// Each player's list of failed setup lines. The server keeps only the line numbers that the
// player's own program reports (ERRRDM n, ERRADD i@line, ERRDON); texts are made when another
// player asks (ERRGET), so they always explain the line as the catalogue holds it now.
#include "players/PlayerSessions.h"

#include "net/Text.h"
#include "server/Server.h"
#include "setups/SetupCatalogue.h"

void PlayerSessions::PlayerErrorListRedim(int16_t slot, int16_t count) {
    ErrorTrap trap(server_.errorLog(), "PlayerErrorListRedim");
    PlayerRecord* player = firstOnSlot(slot);
    if (!player) return;
    // A new list replaces the old one; a negative count leaves the old one as it was.
    if (trap.require(count >= 0, errors::subscriptOutOfRange))
        player->Errors = VbList<int16_t>::withUpperBound(count);
}

void PlayerSessions::PlayerErrorListAdd(std::string_view payload, int16_t slot) {
    ErrorTrap trap(server_.errorLog(), "PlayerErrorListAdd");
    PlayerRecord* player = firstOnSlot(slot);
    if (!player) return;
    // Field 1 is a place in the list, not an error code; places may come in any order.
    const size_t at = payload.find('@');
    if (!trap.require(at != std::string_view::npos, errors::subscriptOutOfRange)) return;
    const std::string_view line = payload.substr(at + 1);
    int16_t lineNumber = 0;
    int32_t place = 0;
    if (!trap.take(text::int16Of(text::leadingNumber(line.substr(0, line.find('@')))), lineNumber)) return;
    if (!trap.take(text::int32Of(text::leadingNumber(payload.substr(0, at))), place)) return;
    int16_t* entry = player->Errors.find(place);
    if (trap.require(entry != nullptr, errors::subscriptOutOfRange)) *entry = lineNumber;
}

// ERRDON needs a handler and nothing more: the list is complete as the ERRADDs left it.
void PlayerSessions::PlayerErrorListDone(int16_t) {}

void PlayerSessions::SendErrorListToPlayer(int16_t toSlot, int16_t position) {
    ErrorTrap trap(server_.errorLog(), "SendErrorListToPlayer");
    Senders& senders = server_.senders();
    const std::string p = text::number(position);
    // A position that is not a listed player is reported as an empty list; element 0 is the
    // empty record, which has no list at all.
    const PlayerRecord* player = position >= 1 ? Players_.find(position) : nullptr;
    const int count =
        trap.require(player != nullptr, errors::subscriptOutOfRange) ? player->Errors.ubound() : 0;
    senders.SendCommand("ERRRDM", p + "@" + text::number(count), toSlot);
    for (int i = 1; i <= count; ++i) {
        const std::string reason = ErrnumToStr(position, player->Errors[i]);
        senders.SendCommand("ERRADD", p + "@" + text::number(i) + "@" + reason, toSlot);
    }
    senders.SendCommand("ERRDON", p, toSlot);
}

std::string PlayerSessions::ErrnumToStr(int16_t position, int16_t lineNumber) {
    ErrorTrap trap(server_.errorLog(), "ErrnumToStr");
    std::string reason;
    const PlayerRecord* player = Players_.find(position);
    const VbList<std::string>* lines = player ? server_.setups().findLines(player->SetupNumber) : nullptr;
    const std::string* line = lines ? lines->find(lineNumber) : nullptr;
    if (!trap.require(line != nullptr, errors::subscriptOutOfRange)) return reason;
    VbList<std::string> fields = text::splitAt(*line);
    const std::string& kind = fields[1];
    // The texts are the ones the players' programs show; their spelling is part of the protocol.
    trap([&] {
        if (kind == "CURSET")
            reason = "Your current setup is different";
        else if (kind == "CURTHE")
            reason = "Your currently selected theater is different";
        else if (kind == "CONFIG")
            reason = "The " + fields[2] + " entry in cofig file is differrent or absent";
        else if (kind == "CHKSUM")
            reason = "The " + fields[2] + " file is differrent or absent";
        else if (kind == "CHKSIM")
            reason = "There is a directory called 'Sim' in your setup. Please delete it...";
    });
    return reason;
}
