#include "players/PlayerSessions.h"

#include "basics/Text.h"
#include "relay/AirplaneText.h"
#include "relay/AwacsClients.h"

PlayerSessions::PlayerSessions(SlotChannel& channel, AwacsClients& awacs, const SetupCatalogue& setups,
                               RunLogs logs, StatusDisplay& display)
    : channel_(channel), awacs_(awacs), setups_(setups), logs_(logs), display_(display) {
    serveCommands();
}

void PlayerSessions::reset() {
    roster_.reset();
    channel_.reset();
}

std::string PlayerSessions::describe(int position) const {
    const PlayerRecord& p = roster_[position];
    return text::number(position) + "@" + p.name + "@" + p.setupName + "@" + p.mark;
}

PlayerRecord* PlayerSessions::firstOnSlot(int16_t slot) {
    for (int i = 1; i <= roster_.ubound(); ++i)
        if (roster_[i].slot == slot) return &roster_[i];
    return nullptr;
}

void PlayerSessions::sendToEveryPlayer(std::string_view command, std::string_view data) {
    for (int i = 1; i <= roster_.ubound(); ++i)
        channel_.send(command, data, roster_[i].slot);
}

void PlayerSessions::announceTo(const Announce& announce) const {
    for (int k = 1; k <= roster_.ubound(); ++k)
        announce(playerAnnouncement(roster_[k].slot, roster_[k].name));
}

void PlayerSessions::addPlayer(std::string_view name, int16_t slot) {
    ErrorTrap trap(logs_.errors, "AddToPlayerList");
    // A second VALIDR on one slot makes a second record: both get every status change and
    // both go when the connection does.
    int listed = 0;
    for (int i = 1; i <= roster_.ubound(); ++i)
        listed += roster_[i].slot == slot;
    if (!trap.require(listed < kMaxListingsPerSlot, tooManyListings)) return;
    PlayerRecord& added = roster_.append();
    added.name = name;
    added.slot = slot;
    added.mark = "-";
    channel_.markRegistered(slot);
    showRoster();
    channel_.tell(
        slot, QString("registered as \"%1\" (player %2)").arg(text::printable(name)).arg(roster_.ubound()));
    awacs_.sendToAwacs("NEWCLT", playerAnnouncement(slot, name));
    sendToEveryPlayer("PLSNEW", describe(roster_.ubound()));
}

void PlayerSessions::dropPlayer(int16_t slot) {
    // A second close or error for the slot ends here.
    if (!channel_.taken(slot)) return;
    ErrorTrap trap(logs_.errors, "DeletePlayer");
    channel_.release(slot, trap);
    removePlayer(slot);
}

void PlayerSessions::removePlayer(int16_t slot) {
    const int removedPosition = roster_.removeWhere([&](const PlayerRecord& p) { return p.slot == slot; });
    showRoster();
    awacs_.sendToAwacs("DELCLT", text::number(slot));
    // Goes out even when the connection never registered, then as "0".
    sendToEveryPlayer("PLSDEL", text::number(removedPosition));
}

// VALEND, then VALIDR in the same write: a player listed for a connection that is gone leaves
// as the first did.
void PlayerSessions::forgetPlayer(int16_t slot) {
    for (int i = 1; i <= roster_.ubound(); ++i)
        if (roster_[i].slot == slot) {
            removePlayer(slot);
            return;
        }
}

void PlayerSessions::sendPlayerList(int16_t slot) {
    const int count = roster_.ubound();
    channel_.send("PLRDIM", text::number(count), slot);
    for (int i = 1; i <= count; ++i)
        channel_.send("PLSADD", describe(i), slot);
    channel_.send("PLDONE", "", slot);
    channel_.send("AWANUM", text::number(awacs_.listed().ubound()), slot);
}

void PlayerSessions::markVerification(std::string_view verdict, int16_t slot) {
    std::string mark;
    if (verdict == "OK")
        mark = "O";
    else if (verdict == "NOK")
        mark = "X";
    else if (verdict == "?")
        mark = "-";
    int position = 0; // no record on the slot: the broadcast describes the empty element 0
    for (int i = 1; i <= roster_.ubound(); ++i) {
        if (roster_[i].slot != slot) continue;
        if (!mark.empty()) roster_[i].mark = mark;
        position = i;
    }
    if (position > 0 && !mark.empty()) {
        const PlayerRecord& p = roster_[position];
        const char* word = mark == "O" ? "verified" : mark == "X" ? "failed" : "not verified";
        channel_.tell(slot, QString("\"%1\": %2 (%3) against setup \"%4\"")
                                .arg(text::printable(p.name), word, QString::fromStdString(mark),
                                     text::printable(p.setupName)));
    }
    sendToEveryPlayer("PLSUPD", describe(position));
    showRoster();
}

void PlayerSessions::showRoster() {
    std::vector<PlayerRow> rows;
    for (int i = 1; i <= roster_.ubound(); ++i) {
        const PlayerRecord& p = roster_[i];
        rows.push_back({text::display(p.name + " (" + p.setupName + ")"), imageOfMark(p.mark), p.slot});
    }
    display_.showPlayers(rows);
}

int16_t PlayerSessions::imageOfMark(std::string_view mark) {
    if (mark == "O") return 1;
    if (mark == "X") return 2;
    if (mark == "-") return 3;
    return 0;
}
