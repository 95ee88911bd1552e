#include "relay/SimClients.h"

#include "net/Framing.h"
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
    SimCommands.reset();
    Text2_ = text::number(SimList_.ubound());
}

void SimClients::WS3_ConnectionRequest(int index, qintptr requestId) {
    if (index != 0) return;
    ErrorTrap trap(server_.errorLog(), "WS3_ConnectionRequest");
    acceptOnLowestFreeSlot(server_.WS3(), SimSlotUsed, SimCommands, requestId, trap);
}

void SimClients::WS3_DataArrival(int index) {
    ErrorTrap trap(server_.errorLog(), "WS3_DataArrival");
    QByteArray data;
    trap([&] { data = server_.WS3().readAll(index); });
    ParseInto(SimCommands, index, std::string_view(data.constData(), static_cast<size_t>(data.size())),
              server_.errorLog(), "ParseData3");
    trap([&] {
        const CommandList& commands = SimCommands[index];
        for (int i = 1; i <= commands.ubound(); ++i)
            dispatch(index, commands[i]);
    });
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
    const std::string& c = command.Command;
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
    VbList<std::string> fields = text::splitAt(data);
    SimRecord& record = SimList_.append();
    trap([&] { record.Name = fields[1]; });
    record.Slot = slot;
    // A payload without a place count, or a negative one, leaves the record without places.
    trap([&] {
        long places = text::toInt32(text::leadingNumber(fields[2]));
        if (places > kMaxPlaces) throw RuntimeError(7, "Out of memory");
        record.Planes = VbList<int16_t>::withUpperBound(places);
    });
    UpdateDisplaySIM();
}

void SimClients::AddAirplaneToSim(std::string_view data, int16_t slot) {
    ErrorTrap trap(server_.errorLog(), "AddAirplaneToSim");
    SlotTable& numbers = server_.players().PlayerSlotUsed();
    // The number is taken before the place is looked up, so a bad place keeps it taken; with
    // every number taken, 0 is stored and nothing is announced.
    const int16_t n = lowestFreeSlot(numbers);
    numbers[static_cast<size_t>(n)] = true;
    trap([&] {
        long place = text::toInt32(text::leadingNumber(data));
        SimList_[slot].Planes[place] = n;
    });
    if (n == 0) return;
    const auto& awacs = server_.awacs().AwacsList();
    for (int k = 1; k <= awacs.ubound(); ++k)
        trap([&] {
            server_.senders().SendCommand2("NEWCLT", airplaneAnnouncement(n, SimList_[slot].Name), awacs[k]);
        });
}

void SimClients::DeleteAirplaneFromSim(std::string_view data, int16_t slot) {
    ErrorTrap trap(server_.errorLog(), "DeleteAirplaneFromSim");
    int16_t place = 0;
    trap([&] { place = text::leadingInt16(data); });
    // An empty place still tells every AWACS client, with "0".
    const auto& awacs = server_.awacs().AwacsList();
    for (int k = 1; k <= awacs.ubound(); ++k)
        trap([&] {
            server_.senders().SendCommand2("DELCLT", text::number(SimList_[slot].Planes[place]), awacs[k]);
        });
    trap([&] {
        int16_t& n = SimList_[slot].Planes[place];
        slotFlag(server_.players().PlayerSlotUsed(), n) = false;
        n = 0;
    });
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
