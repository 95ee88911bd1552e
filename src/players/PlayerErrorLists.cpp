// Each player's list of failed setup lines. The server keeps only the line numbers that the
// player's own program reports (ERRRDM n, ERRADD i@line, ERRDON); texts are made when another
// player asks (ERRGET), so they always explain the line as the catalogue holds it now.
#include "players/PlayerSessions.h"

#include "basics/Text.h"
#include "setups/FailureSentence.h"
#include "setups/SetupCatalogue.h"

void PlayerSessions::resizeFailedLines(int16_t slot, int16_t count) {
    ErrorTrap trap(logs_.errors, "PlayerErrorListRedim");
    PlayerRecord* player = firstOnSlot(slot);
    if (!player) return;
    // A new list replaces the old one; a negative count leaves the old one as it was.
    if (trap.require(count >= 0, errors::subscriptOutOfRange))
        player->failedLines = VbList<int16_t>::withUpperBound(count);
}

void PlayerSessions::addFailedLine(std::string_view payload, int16_t slot) {
    ErrorTrap trap(logs_.errors, "PlayerErrorListAdd");
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
    int16_t* entry = player->failedLines.find(place);
    if (trap.require(entry != nullptr, errors::subscriptOutOfRange)) *entry = lineNumber;
}

void PlayerSessions::sendFailedLines(int16_t toSlot, int16_t position) {
    ErrorTrap trap(logs_.errors, "SendErrorListToPlayer");
    const std::string p = text::number(position);
    // A position that is not a listed player is reported as an empty list; element 0 is the
    // empty record, which has no list at all.
    const PlayerRecord* player = position >= 1 ? roster_.find(position) : nullptr;
    const int count =
        trap.require(player != nullptr, errors::subscriptOutOfRange) ? player->failedLines.ubound() : 0;
    channel_.send("ERRRDM", p + "@" + text::number(count), toSlot);
    for (int i = 1; i <= count; ++i) {
        const std::string reason = failureReason(position, player->failedLines[i]);
        channel_.send("ERRADD", p + "@" + text::number(i) + "@" + reason, toSlot);
    }
    channel_.send("ERRDON", p, toSlot);
}

std::string PlayerSessions::failureReason(int16_t position, int16_t lineNumber) {
    ErrorTrap trap(logs_.errors, "ErrnumToStr");
    std::string reason;
    const PlayerRecord* player = roster_.find(position);
    const VbList<std::string>* lines = player ? setups_.findLines(player->setupNumber) : nullptr;
    const std::string* line = lines ? lines->find(lineNumber) : nullptr;
    if (!trap.require(line != nullptr, errors::subscriptOutOfRange)) return reason;
    // A line that lacks the field its sentence names fails here and explains as "".
    trap([&] { reason = failureSentence(*line); });
    return reason;
}
