#pragma once
// The sentence that explains a failed setup line, by its record kind: what a player is told
// when it asks why another player's installation failed, and what the operator is told when
// this machine's installation is checked. The players' programs show these texts as they are,
// so their spelling ("cofig", "differrent") is part of the protocol.
#include <string>
#include <string_view>

// "" for a kind that has no sentence. A CONFIG or CHKSUM line without a second field raises
// "Subscript out of range", as every lookup of a missing field does.
std::string failureSentence(std::string_view line);
