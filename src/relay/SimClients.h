#pragma once
// The SIM clients (port 5557): simulators, their airplanes (numbered from the player slot
// table) and the relay of their positions.
//
// Two ways of finding a simulator's record are kept on purpose: SIMNEW appends, removal
// searches by slot, but ADDAIR, DELAIR and SIMLOC take the record whose position in the list
// equals the client's slot. They agree while simulators announce themselves in slot order
// and none has left before them.
#include "basics/RunLogs.h"
#include "basics/StatusDisplay.h"
#include "basics/VbList.h"
#include "net/SlotChannel.h"
#include "relay/PictureSource.h"
#include "relay/PlayerAudience.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

class AwacsClients;

struct SimRecord {
    std::string name;
    int16_t slot = 0;
    VbList<int16_t> airplanes; // place -> airplane number, 0 = empty
};

class SimClients : public PictureSource {
  public:
    // The most places a simulator may announce, and all of one connection's records together:
    // place numbers are 16-bit on the wire.
    static constexpr long kMaxPlaces = 32767;

    static const ChannelNames& channelNames();

    // Airplane numbers are taken from, and given back to, the player slot table.
    SimClients(SlotChannel& channel, SlotTable& airplaneNumbers, AwacsClients& awacs, RunLogs logs,
               StatusDisplay& display);
    // Who hears the counter.
    void connect(PlayerAudience& audience) { audience_ = &audience; }
    void reset();

    // SIMNEW name@places, ADDAIR place, DELAIR place, SIMLOC place@text, SIMEND.
    void addSimulator(std::string_view data, int16_t slot);
    void addAirplane(std::string_view data, int16_t slot);
    void removeAirplane(std::string_view data, int16_t slot);
    void relayPosition(std::string_view data, int16_t slot);
    // SIMEND or the connection gone: its airplanes leave the picture and the slot is freed.
    void dropSimulator(int16_t slot);

    // Each simulator's airplanes, as NEWCLT payloads for a new AWACS client.
    void announceTo(const Announce& announce) const override;

    const VbList<SimRecord>& simulators() const { return simulators_; }
    // One message to every simulator, in list order.
    void sendToEverySim(std::string_view command, std::string_view data);

  private:
    void showCount();
    // An airplane number is free again, whoever took it.
    void giveBack(int16_t number);
    void giveBackNumbersOf(int16_t slot);
    void forgetSimulator(int16_t slot);

    SlotChannel& channel_;
    SlotTable& airplaneNumbers_;
    AwacsClients& awacs_;
    RunLogs logs_;
    StatusDisplay& display_;
    PlayerAudience* audience_ = nullptr;
    VbList<SimRecord> simulators_;
    // For each airplane number, the SIM connection whose ADDAIR took it (0: none), so that all
    // of them come back when that connection ends, whatever its records still know of them.
    std::array<int16_t, kMaxSlot + 1> numberTakenBy_{};
};
