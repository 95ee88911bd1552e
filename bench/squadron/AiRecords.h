#pragma once
// The AI Spy's update records as the simulator writes them, and the check of what AWACS
// clients receive for them.
//
// Each aircraft is one 60-character label: a filler line, the name line "12*" + name, a
// speed/heading line of 8 characters and an altitude line. The simulator hides its
// bookkeeping in the fields the server keeps: the name is "A" + aircraft (2 digits) + update
// number (7 digits), the 6 digits kept from the middle line are the stream, the altitude is
// the send time in microseconds (12 digits). Each converted record is then exactly 28
// characters: name (10), middle field (6), altitude (12).
#include <cstdint>
#include <string>
#include <string_view>

namespace airecords {

constexpr size_t kRecordChars = 60;
constexpr size_t kConvertedChars = 28;
// The aircraft name of a hostile AI Spy's records: AWACS clients set its AILOCA apart.
constexpr std::string_view kHostileName = "HOSTILE";

// The data of one AIUPDT (without the command word): `aircraft` records.
std::string buildUpdate(int stream, uint32_t seq, int aircraft, uint64_t sentAtUs);

struct Parsed {
    enum Outcome { Whole, Merged, Corrupt } outcome = Corrupt;
    int stream = -1;
    uint32_t seq = 0;
    uint64_t sentAtUs = 0;
    int aircraft = 0;
};

// An AILOCA text: Whole when it is `aircraft` well-formed records of one update; Merged when
// such records are followed by the garbage that two updates read together convert into.
Parsed parseConverted(std::string_view text, int aircraft);

} // namespace airecords
