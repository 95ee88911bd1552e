#pragma once
// Splitting one arrival into messages. Each arrival is parsed on its own and nothing is carried
// to the next: a message split across two reads is lost as a whole (its head has no NUL, its
// tail reads as a message of its own). Peers send one message per write.
#include "basics/ErrorTrap.h"
#include "net/Message.h"

#include <cstddef>
#include <string_view>

// No honest message comes near this (positions and names are tens of bytes); a longer one is
// dropped whole, so nothing a peer sends is stored or repeated at more than this size.
inline constexpr size_t kMaxMessageBytes = 16 * 1024;

// The messages of one arrival on the player, AWACS and SIM channels, in order, each viewing the
// arrival's bytes. A message ends at a NUL; whatever follows the last NUL is dropped, and so is
// a message longer than kMaxMessageBytes.
class MessageCursor {
  public:
    explicit MessageCursor(std::string_view arrival) : rest_(arrival) {}
    // The next message, or false at the end of the arrival.
    bool next(Message& message);
    // What has not been handed out yet.
    std::string_view rest() const { return rest_; }

  private:
    std::string_view rest_;
};

// A message of fewer than 6 characters gets a short Command and no Data, and its Data cannot be
// taken: "Invalid procedure call". Raised into the trap without unwinding, so a peer sending
// nothing but NULs costs no more per message than one sending commands.
bool hasShortMessage(std::string_view arrival);

// ParseData/ParseData2/ParseData3: the check of one whole arrival before any of its commands is
// handled; a short message leaves its error in the routine's trap, which settles at once.
void checkArrival(std::string_view arrival, ErrorLog& log, std::string_view routine);

// Player/AWACS/SIM channels, whole: the records MessageCursor hands out.
MessageList splitArrival(std::string_view data, ErrorTrap& trap);

// AI Spy channel: every arrival is exactly one command, NULs included in its Data.
MessageList splitAiArrival(std::string_view data, ErrorTrap& trap);
