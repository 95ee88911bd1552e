#pragma once
// Text rules shared by every channel: field splitting at "@", the leading-number rule, and the
// strict conversions whose failures the routines trap. Protocol text stays single-byte.
#include "basics/VbList.h"

#include <QString>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace text {

// Fields 1..k+1 for k "@" characters; empty fields are kept, there is no escaping.
VbList<std::string> splitAt(std::string_view s);

// The longest leading decimal number (leading blanks skipped, optional sign and fraction),
// 0 when there is none.
double leadingNumber(std::string_view s);

// Rounds to the nearest integer, halves to the even neighbour; "Overflow" outside 16 bits.
Checked<int16_t> int16Of(double value);
// Same, for 32 bits.
Checked<int32_t> int32Of(double value);
inline int16_t toInt16(double value) {
    return int16Of(value).orThrow();
}
inline int32_t toInt32(double value) {
    return int32Of(value).orThrow();
}
// Leading number of the text, rounded into 16 bits.
inline int16_t leadingInt16(std::string_view s) {
    return toInt16(leadingNumber(s));
}

// A strict conversion: the whole text (blanks around it allowed) must be a number,
// else "Type mismatch".
Checked<int32_t> strictInt32Of(std::string_view s);
inline int32_t strictInt32(std::string_view s) {
    return strictInt32Of(s).orThrow();
}

inline std::string number(long long n) {
    return std::to_string(n);
}

// Protocol and file text is single-byte; it becomes a QString only to be shown or to name a file.
QString display(std::string_view s);
// Peer or file text as a line of the operator's log or a terminal may show it: control bytes
// (CR, LF, escape, bell, DEL...) written as \xNN so they cannot forge lines or steer a
// terminal, and text beyond maxChars cut with "...".
QString printable(std::string_view s, size_t maxChars = 80);

// The lines of a text file as read: CR LF, a lone LF and a lone CR each end a line, and a last
// line without an end counts too. Line ends are removed.
std::vector<std::string> splitLines(std::string_view bytes);
// The same lines one at a time, as views into the text: a file of nothing but line ends costs
// no string per line.
class LineCursor {
  public:
    explicit LineCursor(std::string_view bytes) : rest_(bytes) {}
    // The next line into `line`; false when there is none.
    bool next(std::string_view& line);

  private:
    std::string_view rest_;
};

// ASCII letters in upper case; other bytes as they are.
std::string upper(std::string s);

} // namespace text
