#pragma once
// Splitting one arrival into messages. Each arrival is parsed on its own and nothing is carried
// to the next: a message split across two reads is lost as a whole (its head has no NUL, its
// tail reads as a message of its own). Peers send one message per write.
#include "net/CommandRec.h"
#include "server/ErrorTrap.h"

#include <string_view>

// Player, AWACS and SIM channels: messages end in NUL. A message of fewer than 6 characters
// gets a short Command and no Data, and leaves "Invalid procedure call" pending in the trap.
CommandList splitArrival(std::string_view data, ErrorTrap& trap);

// AI Spy channel: every arrival is exactly one command, NULs included in its Data.
CommandList splitAiArrival(std::string_view data, ErrorTrap& trap);

// ParseData/ParseData2/ParseData3: the commands of one arrival replace what arrays[index]
// held; failures are trapped under the routine's own name.
void ParseInto(VbList<CommandList>& arrays, int index, std::string_view data, ErrorLog& log,
               std::string_view routine);
