#include "relay/AiSpyText.h"

#include "basics/Text.h"

#include <vector>

namespace {

constexpr long kRecordLength = 60;
constexpr size_t kNameFieldLength = 10;

// Where the conversion stood when a failure struck, as the error line reports it ("---L=14"):
// only two statements can fail, the record count (before any record, 0) and the name line.
constexpr int16_t kNothingDone = 0;
constexpr int16_t kLineCountTested = 14;

std::string reversed(const std::string& s) {
    return std::string(s.rbegin(), s.rend());
}

// The record's lines, bottom line first, each in reading order. The scan starts at the
// second-to-last character: the record's last character is never looked at.
void splitLinesFromBottom(std::string_view record, std::vector<std::string>& lines) {
    lines.clear();
    std::string collected; // gathered backwards, turned round when stored
    for (long pos = static_cast<long>(record.size()) - 1; pos >= 1; --pos) {
        char c = record[static_cast<size_t>(pos - 1)];
        if (c == '\n') {
            lines.emplace_back();
            lines.back() = reversed(collected);
            collected.clear();
        } else {
            if (c != '\r') collected.push_back(c);
        }
    }
    lines.push_back(reversed(collected));
}

const std::string* lineAt(const std::vector<std::string>& lines, size_t fromBottom) {
    return fromBottom >= 1 && fromBottom <= lines.size() ? &lines[fromBottom - 1] : nullptr;
}

// The text after the first "*" with every "*" and CR taken out; a line without "*" leaves the
// name as the previous record had it.
void takeName(std::string_view nameLine, std::string& name) {
    size_t star = nameLine.find('*');
    if (star == std::string_view::npos) return;
    name.clear();
    for (char c : nameLine.substr(star + 1))
        if (c != '*' && c != '\r') name.push_back(c);
}

// The first number (3 characters) and the second, zero-padded on the left to 3 digits; the
// separator, the final character and a 4-character prefix (lines of 10 to 12) are dropped.
void appendLine2Field(std::string_view line, std::string& out) {
    const size_t length = line.size();
    if (length < 6 || length == 9 || length > 12) return;
    const size_t prefix = length >= 10 ? 4 : 0;
    const size_t secondLength = length - prefix - 5; // 1 to 3
    out.append(line.substr(prefix, 3));
    out.append(3 - secondLength, '0');
    out.append(line.substr(prefix + 4, secondLength));
}

// Line 1 without its 3-character prefix, blanks trimmed; a single character gets a leading "0".
void appendLine1Field(std::string_view line, std::string& out) {
    std::string_view value = line.size() > 3 ? line.substr(3) : std::string_view();
    size_t first = value.find_first_not_of(' ');
    if (first == std::string_view::npos) return;
    value = value.substr(first, value.find_last_not_of(' ') - first + 1);
    if (value.size() == 1) out.push_back('0');
    out.append(value);
}

} // namespace

AwacsTextResult convertAiSpyText(std::string_view Text, ErrorTrap& trap) {
    AwacsTextResult result;

    // Halves round to the even neighbour: 90 characters are 2 records, 150 are 2 as well.
    int16_t records = 0;
    if (!trap([&] { records = text::toInt16(static_cast<double>(Text.size()) / kRecordLength); }))
        result.failedAtStep = kNothingDone;

    std::string& out = result.text;
    out.reserve(static_cast<size_t>(records) * 24);
    std::string name; // carried from record to record within the call
    std::string nameLine;
    std::vector<std::string> lines;
    for (long k = 1; k <= records; ++k) {
        const size_t start = static_cast<size_t>(kRecordLength * (k - 1));
        std::string_view record = Text.substr(start, kRecordLength);
        splitLinesFromBottom(record, lines);
        if (lines.size() < 3) continue;
        const bool typeLine = lines[2].starts_with("Typ");
        // A "Typ" line without a line above it fails, and the name line stays as it was.
        if (const std::string* line = lineAt(lines, typeLine ? 4 : 3))
            nameLine = *line;
        else {
            trap.raise(errors::subscriptOutOfRange());
            result.failedAtStep = kLineCountTested;
        }
        takeName(nameLine, name);
        out.append(name, 0, kNameFieldLength);
        if (name.size() < kNameFieldLength) out.append(kNameFieldLength - name.size(), ' ');

        appendLine2Field(lines[1], out);
        appendLine1Field(lines[0], out);
    }
    return result;
}

std::string aiTrafficText(std::string_view Text, ErrorLog& errorLog) {
    ErrorTrap trap(errorLog, "AISPYTxtToAWACSTxt");
    AwacsTextResult result = convertAiSpyText(Text, trap);
    if (trap.pending()) trap.settle("---L=" + text::number(result.failedAtStep));
    return std::move(result.text);
}
