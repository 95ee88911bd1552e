#include "relay/AwacsClients.h"

#include "basics/Text.h"

namespace {

// Routine names and labels as the logs show them.
constexpr ChannelNames kNames{"WS2_ConnectionRequest",
                              "WS2_DataArrival",
                              "ParseData2",
                              "SendCommand2",
                              "Command arrived from AWACS Client #",
                              "Command sent to AWACS Client #",
                              "AWACS client"};

constexpr CommandRow<AwacsClients> kCommands[] = {
    {"NAWACS", true, [](AwacsClients& c, int16_t slot, std::string_view, ErrorTrap&) { c.addClient(slot); }},
    {"AWAEND", true, [](AwacsClients& c, int16_t slot, std::string_view, ErrorTrap&) { c.dropClient(slot); }},
};

} // namespace

const ChannelNames& AwacsClients::channelNames() {
    return kNames;
}

AwacsClients::AwacsClients(SlotChannel& channel, RunLogs logs, StatusDisplay& display)
    : channel_(channel), logs_(logs), display_(display) {
    // A connection that fails is closed but the client stays listed and counted: later sends
    // to it are dropped by the sender.
    channel_.serve(*this, kCommands,
                   {[this](int16_t slot) { dropClient(slot); },
                    [this](int16_t slot) { channel_.closeConnection(slot); }});
}

void AwacsClients::connect(std::vector<const PictureSource*> sources, PlayerAudience& audience) {
    sources_ = std::move(sources);
    audience_ = &audience;
}

void AwacsClients::reset() {
    listed_.reset();
    channel_.reset();
}

void AwacsClients::addClient(int16_t slot) {
    ErrorTrap trap(logs_.errors, "AddToAWACSList");
    // A second NAWACS lists the client again: it gets every message once per listing.
    int listings = 0;
    for (int k = 1; k <= listed_.ubound(); ++k)
        listings += listed_[k] == slot;
    if (!trap.require(listings < kMaxListingsPerSlot, tooManyListings)) return;
    listed_.append(slot);
    channel_.tell(slot, QString("registered (%1 AWACS clients listed)").arg(listed_.ubound()));
    showCount();

    // The picture so far, to the newcomer only: players first, then the simulators' airplanes.
    for (const PictureSource* source : sources_)
        source->announceTo([&](std::string_view payload) { channel_.send("NEWCLT", payload, slot); });
}

void AwacsClients::dropClient(int16_t slot) {
    if (!channel_.taken(slot)) return;
    ErrorTrap trap(logs_.errors, "DeleteAWACSPlayer");
    channel_.release(slot, trap);
    listed_.removeWhere([&](int16_t listedSlot) { return listedSlot == slot; });
    showCount();
}

// The counter's text is what AWANUM carries.
void AwacsClients::showCount() {
    const std::string count = text::number(listed_.ubound());
    display_.showAwacsCount(QString::fromStdString(count));
    if (audience_) audience_->sendToEveryPlayer("AWANUM", count);
}

void AwacsClients::sendToAwacs(std::string_view command, std::string_view data) {
    channel_.sendToEach(command, data, listed_);
}
