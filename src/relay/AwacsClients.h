#pragma once
// The AWACS clients (port 5556): the list of registered clients that every flight-picture
// message goes to, the replay of the picture to a newcomer, and the relays of positions.
#include "basics/RunLogs.h"
#include "basics/StatusDisplay.h"
#include "basics/VbList.h"
#include "net/SlotChannel.h"
#include "relay/PictureSource.h"
#include "relay/PlayerAudience.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

class AwacsClients {
  public:
    // The routine names and log labels of the channel this component serves.
    static const ChannelNames& channelNames();

    AwacsClients(SlotChannel& channel, RunLogs logs, StatusDisplay& display);
    // What a newcomer is told about, in this order, and who hears the counter.
    void connect(std::vector<const PictureSource*> sources, PlayerAudience& audience);

    // Start-up: nobody listed, every slot free.
    void reset();

    // NAWACS: listed, counted, and told the picture so far.
    void addClient(int16_t slot);
    // AWAEND or the connection closed: the slot is freed and the client no longer listed.
    void dropClient(int16_t slot);

    // The relays to every registered client, one message per report and client: a player's
    // F4LOCA (the whole payload under the player's slot) and converted AI Spy text.
    void relayPlayerPosition(std::string_view data, int16_t slot);
    void relayAiTraffic(std::string_view text);
    // A simulator airplane's position: its number "@" the report's text.
    void relayAirplanePosition(int16_t airplane, std::string_view text);
    // Reports relayed since start (each counts once, whatever the number of clients).
    qint64 reportsRelayed() const { return reportsRelayed_; }

    // One message to every listed client, in list order; paid from the broadcast budget of the
    // connection whose message caused it.
    void sendToAwacs(std::string_view command, std::string_view data);
    // A relayed report to every listed client: what the server is for, so nobody's budget pays.
    void relay(std::string_view command, std::string_view data) {
        channel_.relayToEach(command, data, listed_);
    }
    // One message to one client's slot.
    void sendTo(std::string_view command, std::string_view data, int16_t slot) {
        channel_.send(command, data, slot);
    }

    // The slots of the registered clients, elements 1..ubound in order of registration.
    const VbList<int16_t>& listed() const { return listed_; }

  private:
    // What a NAWACS after AWAEND in the same write listed (the channel's leftovers).
    void forgetClient(int16_t slot);
    void showCount();

    SlotChannel& channel_;
    RunLogs logs_;
    StatusDisplay& display_;
    std::vector<const PictureSource*> sources_;
    PlayerAudience* audience_ = nullptr;
    VbList<int16_t> listed_;
    qint64 reportsRelayed_ = 0;
};
