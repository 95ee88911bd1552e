#include "net/Framing.h"

#include <cstring>

namespace {
constexpr size_t kCommandLength = 6;

Message recordOf(std::string_view message) {
    if (message.size() < kCommandLength) return {message, {}};
    return {message.substr(0, kCommandLength), message.substr(kCommandLength)};
}
} // namespace

bool MessageCursor::next(Message& message) {
    for (;;) {
        const void* nul = std::memchr(rest_.data(), '\0', rest_.size());
        if (!nul) {
            rest_ = {}; // whatever followed the last NUL is dropped
            return false;
        }
        const size_t length = static_cast<size_t>(static_cast<const char*>(nul) - rest_.data());
        const std::string_view whole = rest_.substr(0, length);
        rest_.remove_prefix(length + 1);
        if (length > kMaxMessageBytes) continue;
        message = recordOf(whole);
        return true;
    }
}

bool hasShortMessage(std::string_view arrival) {
    MessageCursor cursor(arrival);
    Message message;
    while (cursor.next(message))
        if (message.command.size() < kCommandLength) return true;
    return false;
}

void checkArrival(std::string_view arrival, ErrorLog& log, std::string_view routine) {
    if (!hasShortMessage(arrival)) return;
    ErrorTrap trap(log, routine);
    trap.raise(errors::invalidCall());
}

MessageList splitArrival(std::string_view data, ErrorTrap& trap) {
    MessageList list;
    MessageCursor cursor(data);
    Message message;
    while (cursor.next(message)) {
        if (message.command.size() < kCommandLength) trap.raise(errors::invalidCall());
        list.append(message);
    }
    return list;
}

MessageList splitAiArrival(std::string_view data, ErrorTrap& trap) {
    MessageList list;
    if (data.size() < kCommandLength) trap.raise(errors::invalidCall());
    list.append(recordOf(data));
    return list;
}
