#pragma once
// The bytes of the hostile peers' writes: plain functions, so their shape is tested apart.
#include <cstdint>
#include <string>

namespace attackbatch {

// `count` lines "SIMNEWh@32767": a simulator asking for 32767 airplane places, 14 bytes each.
std::string simnew(int count);
// `count` registrations "VALIDRH" + 5 digits (13 bytes each), numbered from `first`.
std::string validr(int count, uint64_t first);
// `count` copies of one command with its data.
std::string repeated(const std::string& command, const std::string& data, int count);
// One AI Spy update (without AIUPDT) of `aircraft` records named HOSTILE; the last record's
// altitude line holds a NUL followed by DISCON, which a server that relays the NUL turns
// into an extra DISCON message for every AWACS client.
std::string aiUpdateWithNul(int aircraft);

} // namespace attackbatch
