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
    trap([&] { player->Errors = VbList<int16_t>::withUpperBound(count); });
}

void PlayerSessions::PlayerErrorListAdd(const std::string& payload, int16_t slot) {
    ErrorTrap trap(server_.errorLog(), "PlayerErrorListAdd");
    VbList<std::string> fields = text::splitAt(payload);
    PlayerRecord* player = firstOnSlot(slot);
    if (!player) return;
    // Field 1 is a place in the list, not an error code; places may come in any order.
    trap([&] {
        const int16_t lineNumber = text::leadingInt16(fields[2]);
        player->Errors[text::toInt32(text::leadingNumber(fields[1]))] = lineNumber;
    });
}

// ERRDON needs a handler and nothing more: the list is complete as the ERRADDs left it.
void PlayerSessions::PlayerErrorListDone(int16_t) {}

void PlayerSessions::SendErrorListToPlayer(int16_t toSlot, int16_t position) {
    ErrorTrap trap(server_.errorLog(), "SendErrorListToPlayer");
    Senders& senders = server_.senders();
    const std::string p = text::number(position);
    // A position that is not a listed player is reported as an empty list; element 0 is the
    // empty record, which has no list at all.
    int count = 0;
    trap([&] {
        if (position < 1) throw errors::subscriptOutOfRange();
        count = Players_[position].Errors.ubound();
    });
    senders.SendCommand("ERRRDM", p + "@" + text::number(count), toSlot);
    for (int i = 1; i <= count; ++i) {
        std::string reason;
        trap([&] { reason = ErrnumToStr(position, Players_[position].Errors[i]); });
        senders.SendCommand("ERRADD", p + "@" + text::number(i) + "@" + reason, toSlot);
    }
    senders.SendCommand("ERRDON", p, toSlot);
}

std::string PlayerSessions::ErrnumToStr(int16_t position, int16_t lineNumber) {
    ErrorTrap trap(server_.errorLog(), "ErrnumToStr");
    std::string reason;
    std::string line;
    if (!trap([&] {
            const SetupCatalogue& setups = server_.setups();
            line = setups.linesOf(Players_[position].SetupNumber)[lineNumber];
        }))
        return reason;
    VbList<std::string> fields = text::splitAt(line);
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
