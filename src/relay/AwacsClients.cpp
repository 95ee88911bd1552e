#include "relay/AwacsClients.h"

#include "basics/Text.h"

namespace {

// A failed connection leaves its client listed and counted, as the players saw it at the failure;
// the listing of a connection that is gone is then let go as AWAEND would, one keep-alive period
// later. A short fixed time rather than the grace for registering, which the operator may switch
// off: a vanished client's slot comes back within the silence limit and this, about 75 s in all.
constexpr int kDeadListingMs = 10000;

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
    // A connection that fails is closed but the client stays listed and counted: sends to it
    // are dropped by the sender until its listing is let go.
    channel_.serve(*this, kCommands,
                   {[this](int16_t slot) { dropClient(slot); },
                    [this](int16_t slot) {
                        channel_.closeConnection(slot);
                        channel_.letGoLater(
                            slot, kDeadListingMs,
                            QString("its connection had failed %1 s before").arg(kDeadListingMs / 1000));
                    },
                    [this](int16_t slot) { forgetClient(slot); }});
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
    channel_.markRegistered(slot);
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

// AWAEND, then NAWACS in the same write: a listing for a connection that is gone.
void AwacsClients::forgetClient(int16_t slot) {
    if (listed_.removeWhere([&](int16_t listedSlot) { return listedSlot == slot; }) > 0) showCount();
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
