#pragma once
// Properties of the ban file's reader, whose file the server writes but an operator may edit and
// a crash or a full disk may damage. Returns "" when the input passed, or what went wrong.
// Shared with the corpus replay test.
#include "net/BanList.h"

#include <string>
#include <string_view>

namespace fuzzchecks {

// Whatever the bytes, the bans read are at most kMaxBans, each network reads back from its own
// text, and what the server would write of them reads back as the same bans, without problems.
inline std::string banFile(std::string_view input) {
    const BanText read = parseBans(QByteArray(input.data(), static_cast<qsizetype>(input.size())));
    if (read.bans.size() > BanList::kMaxBans) return "more bans than the cap";
    for (const Ban& ban : read.bans) {
        const std::optional<Network> again = parseNetwork(networkText(ban.network));
        if (!again || *again != ban.network)
            return "a network does not read back from its text: " + networkText(ban.network).toStdString();
        if (ban.why.contains('\n') || ban.why.contains('\r')) return "a reason spans lines";
    }
    const BanText written = parseBans(formatBans(read.bans));
    if (!written.problems.isEmpty()) return "what the server writes does not read back cleanly";
    if (written.bans != read.bans) return "what the server writes reads back as other bans";
    return {};
}

} // namespace fuzzchecks
