#include "relay/SimClients.h"

#include "net/ArrivalService.h"
#include "net/Text.h"
#include "players/PlayerSessions.h"
#include "relay/AirplaneText.h"
#include "relay/AwacsClients.h"
#include "relay/SlotFlags.h"
#include "server/Server.h"

SimClients::SimClients(Server& server) : server_(server) {}

void SimClients::reset() {
    SimList_.reset();
    SimSlotUsed.fill(false);
    Text2_ = text::number(SimList_.ubound());
}

void SimClients::WS3_ConnectionRequest(int index, qintptr requestId) {
    if (index != 0) return;
    ErrorTrap trap(server_.errorLog(), "WS3_ConnectionRequest");
    acceptOnLowestFreeSlot(server_.WS3(), SimSlotUsed, requestId, trap);
}

void SimClients::WS3_DataArrival(int index) {
    ErrorTrap trap(server_.errorLog(), "WS3_DataArrival");
    SocketElement* element = nullptr;
    if (!trap([&] { element = &server_.WS3().element(index); })) return;
    serveArrival(*element, server_.errorLog(), "ParseData3",
                 [&](const CommandRec& command) { dispatch(index, command); });
}

void SimClients::WS3_Drained(int index) {
    ErrorTrap trap(server_.errorLog(), "WS3_DataArrival");
    SocketElement* element = nullptr;
    if (!trap([&] { element = &server_.WS3().element(index); })) return;
    resumeArrival(*element, [&](const CommandRec& command) { dispatch(index, command); });
}

void SimClients::WS3_Close(int index) {
    DeleteSimPlayer(static_cast<int16_t>(index));
}
void SimClients::WS3_Error(int index) {
    DeleteSimPlayer(static_cast<int16_t>(index));
}

void SimClients::dispatch(int index, const CommandRec& command) {
    static constexpr std::string_view kLabel = "Command arrived from SIM Client #";
    const auto slot = static_cast<int16_t>(index);
    const std::string_view c = command.Command;
    if (c == "SIMNEW") {
        server_.logArrival(kLabel, index, command);
        AddToSimList(command.Data, slot);
    } else if (c == "SIMEND") {
        server_.logArrival(kLabel, index, command);
        DeleteSimPlayer(slot);
    } else if (c == "SIMLOC") {
        server_.logArrival(kLabel, index, command);
        server_.awacs().SendToAwacsClients2(command.Data, slot);
    } else if (c == "ADDAIR") {
        server_.logArrival(kLabel, index, command);
        AddAirplaneToSim(command.Data, slot);
    } else if (c == "DELAIR") {
        server_.logArrival(kLabel, index, command);
        DeleteAirplaneFromSim(command.Data, slot);
    }
}

void SimClients::AddToSimList(std::string_view data, int16_t slot) {
    ErrorTrap trap(server_.errorLog(), "AddToSimList");
    // A second SIMNEW makes a second record, within limits: a few records per connection and
    // one simulator's worth of places among them.
    int records = 0;
    long placesOnSlot = 0;
    for (int i = 1; i <= SimList_.ubound(); ++i)
        if (SimList_[i].Slot == slot) {
            ++records;
            placesOnSlot += SimList_[i].Planes.ubound();
        }
    if (!trap.require(records < kMaxListingsPerSlot, tooManyListings)) return;
    const size_t at = data.find('@');
    SimRecord& record = SimList_.append();
    record.Name = std::string(data.substr(0, at));
    record.Slot = slot;
    // A payload without a place count, or a negative one, leaves the record without places.
    int32_t places = 0;
    if (trap.require(at != std::string_view::npos, errors::subscriptOutOfRange)) {
        const std::string_view count = data.substr(at + 1);
        if (trap.take(text::int32Of(text::leadingNumber(count.substr(0, count.find('@')))), places) &&
            trap.require(places >= 0, errors::subscriptOutOfRange) &&
            trap.require(places <= kMaxPlaces - placesOnSlot, tooManyListings))
            record.Planes = VbList<int16_t>::withUpperBound(places);
    }
    UpdateDisplaySIM();
}

void SimClients::AddAirplaneToSim(std::string_view data, int16_t slot) {
    ErrorTrap trap(server_.errorLog(), "AddAirplaneToSim");
    SlotTable& numbers = server_.players().PlayerSlotUsed();
    // The number is taken before the place is looked up, so a bad place keeps it taken; with
    // every number taken, 0 is stored and nothing is announced.
    const int16_t n = lowestFreeSlot(numbers);
    numbers[static_cast<size_t>(n)] = true;
    // The simulator is found by position: the record whose place in SimList is the slot.
    SimRecord* sim = SimList_.find(slot);
    int32_t place = 0;
    if (trap.take(text::int32Of(text::leadingNumber(data)), place) &&
        trap.require(sim != nullptr, errors::subscriptOutOfRange)) {
        int16_t* entry = sim->Planes.find(place);
        if (trap.require(entry != nullptr, errors::subscriptOutOfRange)) *entry = n;
    }
    if (n == 0 || !trap.require(sim != nullptr, errors::subscriptOutOfRange)) return;
    server_.awacs().toEveryClient("NEWCLT", airplaneAnnouncement(n, sim->Name), trap);
}

void SimClients::DeleteAirplaneFromSim(std::string_view data, int16_t slot) {
    ErrorTrap trap(server_.errorLog(), "DeleteAirplaneFromSim");
    int16_t place = 0;
    trap.take(text::int16Of(text::leadingNumber(data)), place);
    SimRecord* sim = SimList_.find(slot);
    int16_t* entry = sim ? sim->Planes.find(place) : nullptr;
    if (!trap.require(entry != nullptr, errors::subscriptOutOfRange)) return;
    // An empty place still tells every AWACS client, with "0".
    server_.awacs().toEveryClient("DELCLT", text::number(*entry), trap);
    trap([&] { slotFlag(server_.players().PlayerSlotUsed(), *entry) = false; });
    *entry = 0;
}

void SimClients::DeleteSimPlayer(int16_t slot) {
    if (slot < 0 || slot > SocketArray::kMaxIndex || !SimSlotUsed[static_cast<size_t>(slot)]) return;
    ErrorTrap trap(server_.errorLog(), "DeleteSimPlayer");
    int position = 0;
    for (int i = 1; i <= SimList_.ubound(); ++i)
        if (SimList_[i].Slot == slot) position = i;

    // The numbers are released inside the loop over AWACS clients: a simulator that leaves
    // while none is listed keeps its airplane numbers taken, and those player slots with them.
    const VbList<int16_t>& planes = SimList_[position].Planes;
    SlotTable& numbers = server_.players().PlayerSlotUsed();
    const auto& awacs = server_.awacs().AwacsList();
    for (int k = 1; k <= awacs.ubound(); ++k)
        for (int j = 1; j <= planes.ubound(); ++j)
            trap([&] {
                if (planes[j] != 0)
                    server_.senders().SendCommand2("DELCLT", text::number(planes[j]), awacs[k]);
                slotFlag(numbers, planes[j]) = false;
            });

    trap([&] { server_.WS3().unload(slot); });
    SimSlotUsed[static_cast<size_t>(slot)] = false;

    SimList_.removeWhere([&](const SimRecord& sim) { return sim.Slot == slot; });
    UpdateDisplaySIM();
}

void SimClients::UpdateDisplaySIM() {
    ErrorTrap trap(server_.errorLog(), "UpdateDisplaySIM");
    Text2_ = text::number(SimList_.ubound());
    server_.display().showSimCount(QString::fromStdString(Text2_));
    server_.players().toEveryPlayer("SIMNUM", Text2_, trap);
}
