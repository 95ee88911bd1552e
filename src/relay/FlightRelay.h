#pragma once
// What the relays share: an INDATA payload is a number, "@", and the report's text.
#include <string>
#include <string_view>

// number "@" text, built once per report and shared by every client's send.
std::string numbered(long number, std::string_view text);
