#pragma once
// What the relay needs of the player channel: every listed player hears the AWACS and SIM
// counters (AWANUM, SIMNUM) when they change.
#include <string_view>

class PlayerAudience {
  public:
    virtual ~PlayerAudience() = default;
    virtual void sendToEveryPlayer(std::string_view command, std::string_view data) = 0;
};
