#pragma once
// The AI Spy's update text turned into the AWACS clients' compact text ("AILOCA" data).
//
// The input is a block of 60-character records, one per computer-controlled aircraft, each a
// small label of LF-separated lines (CRs ignored). Read from the bottom of a record: line 1 is
// a 3-character prefix and a value, line 2 two numbers around a separator (optionally behind a
// 4-character prefix), and line 3, or line 4 when line 3 starts with "Typ", holds the name
// after its first "*". Each usable record gives a 10-character name field, a 6-character field
// from line 2 and the value of line 1.
#include "basics/ErrorTrap.h"

#include <cstdint>
#include <string>
#include <string_view>

struct AwacsTextResult {
    std::string text;
    // Where the conversion stood when its last failure struck (0 when none did): the detail
    // an error log line carries to tell which statement failed.
    int16_t failedAtStep = 0;
};

// Pure: one text in, one text out, nothing kept between calls. A failing statement is skipped
// and left pending in the trap; the output built so far is returned in every case.
AwacsTextResult convertAiSpyText(std::string_view Text, ErrorTrap& trap);

// The routine as the AI Spy link calls it: failures are settled under its own name, with the
// step marker ("---L=" + step) appended to the error message.
std::string aiTrafficText(std::string_view Text, ErrorLog& errorLog);
