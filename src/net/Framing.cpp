#include "net/Framing.h"

#include "net/Text.h"

namespace {
// Command = first 6 characters; Data = from character 7 on, which fails for a message of
// fewer than 6 characters and is then skipped.
void fill(CommandRec& rec, std::string_view message, ErrorTrap& trap) {
    rec.Command = std::string(message.substr(0, 6));
    trap([&] { rec.Data = text::mid(message, 7, static_cast<long>(message.size()) - 6); });
}
} // namespace

CommandList splitArrival(std::string_view data, ErrorTrap& trap) {
    CommandList list;
    size_t start = 0;
    for (size_t nul = data.find('\0'); nul != std::string_view::npos; nul = data.find('\0', start)) {
        fill(list.append(), data.substr(start, nul - start), trap);
        start = nul + 1;
    }
    return list; // whatever followed the last NUL is dropped
}

CommandList splitAiArrival(std::string_view data, ErrorTrap& trap) {
    CommandList list;
    fill(list.append(), data, trap);
    return list;
}

void ParseInto(VbList<CommandList>& arrays, int index, std::string_view data, ErrorLog& log,
               std::string_view routine) {
    ErrorTrap trap(log, routine);
    CommandList parsed = splitArrival(data, trap);
    trap([&] { arrays[index] = std::move(parsed); });
}
