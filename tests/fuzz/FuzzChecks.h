#pragma once
// The properties the fuzz targets check on every input, shared with the test that replays the
// kept corpus. Each returns "" when the input passed, or what went wrong.
#include "net/Framing.h"
#include "relay/AiSpyText.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace fuzzchecks {

// The conversion never fails on its own input's shape alone, gives the same text twice, and
// gives nothing when no record can have three lines.
inline std::string aiSpyText(std::string_view input) {
    ErrorLog off(QString(), false, {});
    ErrorTrap trap(off, "AISPYTxtToAWACSTxt");
    const AwacsTextResult first = convertAiSpyText(input, trap);
    const AwacsTextResult second = convertAiSpyText(input, trap);
    if (first.text != second.text) return "two conversions of one text differ";
    if (input.find('\n') == std::string_view::npos && !first.text.empty())
        return "output without any line feed";
    // A record gives a 10-character name, at most 6 from line 2 and a value that shares the
    // record's 59 readable characters with two line feeds and the other lines: 64 at most.
    if (first.text.size() > 64 * ((input.size() + 30) / 60)) return "output longer than its records allow";
    return {};
}

// Player/AWACS/SIM framing: one record per NUL, each message split into its first 6
// characters and the rest. AI Spy framing: exactly one record, split the same way.
inline std::string framing(std::string_view input) {
    ErrorLog off(QString(), false, {});
    ErrorTrap trap(off, "ParseData");
    const MessageList list = splitArrival(input, trap);
    size_t start = 0;
    int i = 0;
    for (size_t nul = input.find('\0'); nul != std::string_view::npos; nul = input.find('\0', start)) {
        const std::string_view message = input.substr(start, nul - start);
        start = nul + 1;
        if (message.size() > kMaxMessageBytes) continue; // dropped whole
        if (++i > list.ubound()) return "fewer records than kept messages";
        const Message& rec = list[i];
        if (rec.command != message.substr(0, 6)) return "command is not the first 6 characters";
        if (rec.data != (message.size() > 6 ? message.substr(6) : std::string_view()))
            return "data is not the rest";
    }
    if (i != list.ubound()) return "more records than kept messages";
    const MessageList ai = splitAiArrival(input, trap);
    if (ai.ubound() != 1) return "AI Spy arrival is not one record";
    if (ai[1].command != input.substr(0, 6)) return "AI Spy command is not the first 6 characters";
    if (ai[1].data != (input.size() > 6 ? input.substr(6) : std::string_view()))
        return "AI Spy data is not the rest";
    return {};
}

} // namespace fuzzchecks
