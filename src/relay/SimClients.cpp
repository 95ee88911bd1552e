#include "relay/SimClients.h"

#include "basics/Text.h"
#include "relay/AirplaneText.h"
#include "relay/AwacsClients.h"

namespace {

constexpr ChannelNames kNames{"WS3_ConnectionRequest",
                              "WS3_DataArrival",
                              "ParseData3",
                              "SendCommand3",
                              "Command arrived from SIM Client #",
                              "Command sent to SIM Client #",
                              "SIM client"};

using Row = CommandRow<SimClients>;
constexpr Row kCommands[] = {
    {"SIMNEW", true,
     [](SimClients& c, int16_t slot, std::string_view data, ErrorTrap&) { c.addSimulator(data, slot); }},
    {"SIMEND", true,
     [](SimClients& c, int16_t slot, std::string_view, ErrorTrap&) { c.dropSimulator(slot); }},
    {"SIMLOC", true,
     [](SimClients& c, int16_t slot, std::string_view data, ErrorTrap&) { c.relayPosition(data, slot); }},
    {"ADDAIR", true,
     [](SimClients& c, int16_t slot, std::string_view data, ErrorTrap&) { c.addAirplane(data, slot); }},
    {"DELAIR", true,
     [](SimClients& c, int16_t slot, std::string_view data, ErrorTrap&) { c.removeAirplane(data, slot); }},
};

// Field 1 and field 2 of an "@"-separated payload; field 2 is absent without an "@".
struct PlaceAndText {
    std::string_view place;
    std::string_view text;
    bool hasText = false;
};

PlaceAndText splitPlace(std::string_view data) {
    const size_t at = data.find('@');
    if (at == std::string_view::npos) return {data, {}, false};
    std::string_view rest = data.substr(at + 1);
    return {data.substr(0, at), rest.substr(0, rest.find('@')), true};
}

} // namespace

const ChannelNames& SimClients::channelNames() {
    return kNames;
}

SimClients::SimClients(SlotChannel& channel, SlotTable& airplaneNumbers, AwacsClients& awacs, RunLogs logs,
                       StatusDisplay& display)
    : channel_(channel), airplaneNumbers_(airplaneNumbers), awacs_(awacs), logs_(logs), display_(display) {
    channel_.serve(*this, kCommands,
                   {[this](int16_t slot) { dropSimulator(slot); },
                    [this](int16_t slot) { dropSimulator(slot); },
                    [this](int16_t slot) { forgetSimulator(slot); }});
}

void SimClients::reset() {
    simulators_.reset();
    numberTakenBy_.fill(0);
    channel_.reset();
}

// A number goes back once. A place found by position can hold a number that another simulator's
// connection took, and that number may be given back before the place lets go of it: by then the
// slot may be a player's, which a second give-back would free under it.
void SimClients::giveBack(int16_t number) {
    if (number < 1 || number > kMaxSlot || numberTakenBy_[static_cast<size_t>(number)] == 0) return;
    slotFlag(airplaneNumbers_, number) = false;
    numberTakenBy_[static_cast<size_t>(number)] = 0;
}

void SimClients::addSimulator(std::string_view data, int16_t slot) {
    ErrorTrap trap(logs_.errors, "AddToSimList");
    // A second SIMNEW makes a second record, within limits: a few records per connection and
    // one simulator's worth of places among them.
    int records = 0;
    long placesOnSlot = 0;
    for (int i = 1; i <= simulators_.ubound(); ++i)
        if (simulators_[i].slot == slot) {
            ++records;
            placesOnSlot += simulators_[i].airplanes.ubound();
        }
    if (!trap.require(records < kMaxListingsPerSlot, tooManyListings)) return;
    channel_.markRegistered(slot);
    const size_t at = data.find('@');
    SimRecord& record = simulators_.append();
    record.name = std::string(data.substr(0, at));
    record.slot = slot;
    // A payload without a place count, or a negative one, leaves the record without places.
    int32_t places = 0;
    if (trap.require(at != std::string_view::npos, errors::subscriptOutOfRange)) {
        const std::string_view count = data.substr(at + 1);
        if (trap.take(text::int32Of(text::leadingNumber(count.substr(0, count.find('@')))), places) &&
            trap.require(places >= 0, errors::subscriptOutOfRange) &&
            trap.require(places <= kMaxPlaces - placesOnSlot, tooManyListings))
            record.airplanes = VbList<int16_t>::withUpperBound(places);
    }
    channel_.tell(slot, QString("registered simulator \"%1\" with %2 places")
                            .arg(text::printable(record.name))
                            .arg(record.airplanes.ubound()));
    showCount();
}

void SimClients::addAirplane(std::string_view data, int16_t slot) {
    ErrorTrap trap(logs_.errors, "AddAirplaneToSim");
    // The number is taken before the place is looked up, so a bad place keeps it taken; with
    // every number taken, 0 is stored and nothing is announced.
    const int16_t n = lowestFreeSlot(airplaneNumbers_);
    airplaneNumbers_[static_cast<size_t>(n)] = true;
    if (n != 0) numberTakenBy_[static_cast<size_t>(n)] = slot;
    // The simulator is found by position: the record whose place in the list is the slot.
    SimRecord* sim = simulators_.find(slot);
    int32_t place = 0;
    if (trap.take(text::int32Of(text::leadingNumber(data)), place) &&
        trap.require(sim != nullptr, errors::subscriptOutOfRange)) {
        int16_t* entry = sim->airplanes.find(place);
        if (trap.require(entry != nullptr, errors::subscriptOutOfRange)) *entry = n;
    }
    if (n == 0 || !trap.require(sim != nullptr, errors::subscriptOutOfRange)) return;
    awacs_.sendToAwacs("NEWCLT", airplaneAnnouncement(n, sim->name));
}

void SimClients::removeAirplane(std::string_view data, int16_t slot) {
    ErrorTrap trap(logs_.errors, "DeleteAirplaneFromSim");
    int16_t place = 0;
    trap.take(text::int16Of(text::leadingNumber(data)), place);
    SimRecord* sim = simulators_.find(slot);
    int16_t* entry = sim ? sim->airplanes.find(place) : nullptr;
    if (!trap.require(entry != nullptr, errors::subscriptOutOfRange)) return;
    // An empty place still tells every AWACS client, with "0".
    awacs_.sendToAwacs("DELCLT", text::number(*entry));
    trap([&] { giveBack(*entry); });
    *entry = 0;
}

// Only the second field goes on, under the airplane number of that place: whatever follows
// a second "@" is dropped. A place that is not a number, outside the simulator's places, or a
// simulator missing at the slot's position relays nothing and leaves the error pending.
void SimClients::relayPosition(std::string_view data, int16_t slot) {
    ErrorTrap trap(logs_.errors, "SendToAwacsClients2");
    const PlaceAndText fields = splitPlace(data);
    int32_t place = 0;
    trap.take(text::strictInt32Of(fields.place), place);
    const SimRecord* sim = simulators_.find(slot);
    const int16_t* number = sim ? sim->airplanes.find(place) : nullptr;
    if (!trap.require(number != nullptr, errors::subscriptOutOfRange)) return;
    const int16_t n = *number;
    if (n == 0 || awacs_.listed().ubound() == 0) return;
    if (!fields.hasText) {
        trap.raise(errors::subscriptOutOfRange());
        return;
    }
    awacs_.relayAirplanePosition(n, fields.text);
}

void SimClients::dropSimulator(int16_t slot) {
    if (!channel_.taken(slot)) return;
    ErrorTrap trap(logs_.errors, "DeleteSimPlayer");
    int position = 0;
    for (int i = 1; i <= simulators_.ubound(); ++i)
        if (simulators_[i].slot == slot) position = i;

    // The numbers are released inside the loop over AWACS clients: a simulator that leaves
    // while none is listed keeps its airplane numbers taken, and those player slots with them.
    const VbList<int16_t>& airplanes = simulators_[position].airplanes;
    const VbList<int16_t>& clients = awacs_.listed();
    for (int k = 1; k <= clients.ubound(); ++k)
        for (int j = 1; j <= airplanes.ubound(); ++j)
            trap([&] {
                if (airplanes[j] != 0) awacs_.sendTo("DELCLT", text::number(airplanes[j]), clients[k]);
                giveBack(airplanes[j]);
            });
    giveBackNumbersOf(slot);
    channel_.release(slot, trap);
    simulators_.removeWhere([&](const SimRecord& sim) { return sim.slot == slot; });
    showCount();
}

// Every other number this connection took goes back too, unannounced as it always was: those
// of a simulator that left with no AWACS client listed, of places that a second ADDAIR
// overwrote, and of ADDAIRs for places it does not have (taken before the place was looked
// up). Kept, they would keep players out until the program ends.
void SimClients::giveBackNumbersOf(int16_t slot) {
    for (int16_t n = 1; n <= kMaxSlot; ++n)
        if (numberTakenBy_[static_cast<size_t>(n)] == slot) giveBack(n);
}

// SIMEND, then SIMNEW or ADDAIR in the same write: records and numbers for a connection that
// is gone.
void SimClients::forgetSimulator(int16_t slot) {
    giveBackNumbersOf(slot);
    if (simulators_.removeWhere([&](const SimRecord& sim) { return sim.slot == slot; }) > 0) showCount();
}

void SimClients::announceTo(const Announce& announce) const {
    for (int s = 1; s <= simulators_.ubound(); ++s)
        for (int j = 1; j <= simulators_[s].airplanes.ubound(); ++j) {
            const int16_t n = simulators_[s].airplanes[j];
            if (n != 0) announce(airplaneAnnouncement(n, simulators_[s].name));
        }
}

void SimClients::sendToEverySim(std::string_view command, std::string_view data) {
    for (int i = 1; i <= simulators_.ubound(); ++i)
        channel_.send(command, data, simulators_[i].slot);
}

// The counter's text is what SIMNUM carries.
void SimClients::showCount() {
    const std::string count = text::number(simulators_.ubound());
    display_.showSimCount(QString::fromStdString(count));
    if (audience_) audience_->sendToEveryPlayer("SIMNUM", count);
}
