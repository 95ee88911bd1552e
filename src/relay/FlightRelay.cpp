// The relays of flight data to the AWACS clients. They run inside the arrival event that
// brought the report, with no queue: each report becomes one message per listed client.
#include "relay/AwacsClients.h"

#include "net/Text.h"
#include "relay/SimClients.h"
#include "server/Server.h"

#include <charconv>

namespace {

// number "@" text, built once per report and shared by every client's send.
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

void AwacsClients::toEveryClient(std::string_view command, std::string_view data, ErrorTrap& trap) {
    Senders& senders = server_.senders();
    for (int k = 1; k <= AwacsList_.ubound(); ++k)
        trap([&] { senders.SendCommand2(command, data, AwacsList_[k]); });
}

// The whole payload goes on, "@" and all; nothing checks that the player is registered.
void AwacsClients::SendToAwacsClients(std::string_view data, int16_t slot) {
    if (AwacsList_.ubound() == 0) return;
    ErrorTrap trap(server_.errorLog(), "SendToAwacsClients");
    toEveryClient("INDATA", numbered(slot, data), trap);
}

// Only the second field goes on, under the airplane number of that place: whatever follows
// a second "@" is dropped. A place that is not a number, outside the simulator's places, or a
// simulator missing at the slot's position relays nothing and leaves the error pending.
void AwacsClients::SendToAwacsClients2(std::string_view data, int16_t slot) {
    ErrorTrap trap(server_.errorLog(), "SendToAwacsClients2");
    const PlaceAndText fields = splitPlace(data);
    int32_t place = 0;
    trap.take(text::strictInt32Of(fields.place), place);
    const SimRecord* sim = server_.sims().SimList().find(slot);
    const int16_t* number = sim ? sim->Planes.find(place) : nullptr;
    if (!trap.require(number != nullptr, errors::subscriptOutOfRange)) return;
    const int16_t n = *number;
    if (n == 0 || AwacsList_.ubound() == 0) return;
    if (!fields.hasText) {
        trap.raise(errors::subscriptOutOfRange());
        return;
    }
    toEveryClient("INDATA", numbered(n, fields.text), trap);
}

void AwacsClients::SendToAwacsClients4(std::string_view text) {
    ErrorTrap trap(server_.errorLog(), "SendToAwacsClients4");
    toEveryClient("AILOCA", text, trap);
}
