// The relays of flight data to the AWACS clients. They run inside the arrival event that
// brought the report, with no queue: each report becomes one message per listed client.
#include "relay/FlightRelay.h"

#include "relay/AwacsClients.h"

#include <charconv>

std::string numbered(long number, std::string_view text) {
    char digits[24];
    auto end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    std::string payload;
    payload.reserve(static_cast<size_t>(end - digits) + 1 + text.size());
    payload.append(digits, end);
    payload.push_back('@');
    payload.append(text);
    return payload;
}

// The whole payload goes on, "@" and all; nothing checks that the player is registered.
void AwacsClients::relayPlayerPosition(std::string_view data, int16_t slot) {
    if (listed_.ubound() == 0) return;
    ++reportsRelayed_;
    relay("INDATA", numbered(slot, data));
}

void AwacsClients::relayAirplanePosition(int16_t airplane, std::string_view text) {
    ++reportsRelayed_;
    relay("INDATA", numbered(airplane, text));
}

void AwacsClients::relayAiTraffic(std::string_view text) {
    ++reportsRelayed_;
    relay("AILOCA", text);
}
