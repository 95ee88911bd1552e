#include "players/PlayerSessions.h"

#include "net/Text.h"
#include "relay/AirplaneText.h"
#include "relay/AwacsClients.h"
#include "server/Server.h"

PlayerSessions::PlayerSessions(Server& server) : server_(server) {}

void PlayerSessions::reset() {
    Players_.reset();
    PlayerSlotUsed_.fill(false);
}

void PlayerSessions::WS1_ConnectionRequest(int index, qintptr requestId) {
    if (index != 0) return;
    ErrorTrap trap(server_.errorLog(), "WS1_ConnectionRequest");
    acceptOnLowestFreeSlot(server_.WS1(), PlayerSlotUsed_, requestId, trap);
}

// A close and an error on the same slot may both arrive; the second finds the slot free.
void PlayerSessions::WS1_Close(int index) {
    DeletePlayer(static_cast<int16_t>(index));
}
void PlayerSessions::WS1_Error(int index) {
    DeletePlayer(static_cast<int16_t>(index));
}

std::string PlayerSessions::describe(int position) const {
    const PlayerRecord& p = Players_[position];
    return text::number(position) + "@" + p.Name + "@" + p.PlayerSetupName + "@" + p.Status;
}

PlayerRecord* PlayerSessions::firstOnSlot(int16_t slot) {
    for (int i = 1; i <= Players_.ubound(); ++i)
        if (Players_[i].Slot == slot) return &Players_[i];
    return nullptr;
}

void PlayerSessions::toEveryPlayer(std::string_view command, const std::string& data, ErrorTrap& trap) {
    for (int i = 1; i <= Players_.ubound(); ++i)
        trap([&] { server_.senders().SendCommand(command, data, Players_[i].Slot); });
}

void PlayerSessions::AddToPlayerList(std::string_view name, int16_t slot) {
    ErrorTrap trap(server_.errorLog(), "AddToPlayerList");
    // A second VALIDR on one slot makes a second record: both get every status change and
    // both go when the connection does.
    int listed = 0;
    for (int i = 1; i <= Players_.ubound(); ++i)
        listed += Players_[i].Slot == slot;
    if (!trap.require(listed < kMaxListingsPerSlot, tooManyListings)) return;
    trap([&] {
        PlayerRecord& added = Players_.append();
        added.Name = name;
        added.Slot = slot;
        added.PlayerSetupName = "";
        added.Status = "-";
        added.Errors.reset();
        added.SetupNumber = 0;
    });
    UpdateDisplay();
    server_.awacs().toEveryClient("NEWCLT", playerAnnouncement(slot, name), trap);
    std::string announcement;
    trap([&] { announcement = describe(Players_.ubound()); });
    toEveryPlayer("PLSNEW", announcement, trap);
}

void PlayerSessions::DeletePlayer(int16_t slot) {
    // A second close or error for the slot, or an event on the listener, ends here.
    if (slot < 0 || slot >= 49 || !PlayerSlotUsed_[static_cast<size_t>(slot)]) return;
    ErrorTrap trap(server_.errorLog(), "DeletePlayer");
    trap([&] { server_.WS1().unload(slot); });
    PlayerSlotUsed_[static_cast<size_t>(slot)] = false;

    const int removedPosition = Players_.removeWhere([&](const PlayerRecord& p) { return p.Slot == slot; });

    UpdateDisplay();
    server_.awacs().toEveryClient("DELCLT", text::number(slot), trap);
    // Goes out even when the connection never registered, then as "0".
    toEveryPlayer("PLSDEL", text::number(removedPosition), trap);
}

void PlayerSessions::SendPlayerslist(int16_t slot) {
    ErrorTrap trap(server_.errorLog(), "SendPlayerslist");
    Senders& senders = server_.senders();
    const int count = Players_.ubound();
    trap([&] { senders.SendCommand("PLRDIM", text::number(count), slot); });
    for (int i = 1; i <= count; ++i)
        trap([&] { senders.SendCommand("PLSADD", describe(i), slot); });
    trap([&] { senders.SendCommand("PLDONE", "", slot); });
    trap([&] { senders.SendCommand("AWANUM", text::number(server_.awacs().AwacsList().ubound()), slot); });
}

void PlayerSessions::UpdateVerifStatus(std::string_view status, int16_t slot) {
    ErrorTrap trap(server_.errorLog(), "UpdateVerifStatus");
    std::string mark;
    if (status == "OK")
        mark = "O";
    else if (status == "NOK")
        mark = "X";
    else if (status == "?")
        mark = "-";
    int position = 0; // no record on the slot: the broadcast describes the empty element 0
    for (int i = 1; i <= Players_.ubound(); ++i) {
        if (Players_[i].Slot != slot) continue;
        if (!mark.empty()) Players_[i].Status = mark;
        position = i;
    }
    std::string update;
    trap([&] { update = describe(position); });
    toEveryPlayer("PLSUPD", update, trap);
    UpdateDisplay();
}

void PlayerSessions::UpdateDisplay() {
    ErrorTrap trap(server_.errorLog(), "UpdateDisplay");
    std::vector<PlayerRow> rows;
    for (int i = 1; i <= Players_.ubound(); ++i) {
        const PlayerRecord& p = Players_[i];
        std::string label = p.Name + " (" + p.PlayerSetupName + ")";
        rows.push_back({text::display(label), StatusToImageNum(p.Status)});
    }
    server_.display().showPlayers(rows);
}

int16_t PlayerSessions::StatusToImageNum(std::string_view status) {
    if (status == "O") return 1;
    if (status == "X") return 2;
    if (status == "-") return 3;
    return 0;
}
