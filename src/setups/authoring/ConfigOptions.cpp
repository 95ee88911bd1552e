#include "setups/authoring/ConfigOptions.h"

#include "basics/Text.h"
#include "setups/SetupFile.h"

bool parseConfigLine(const std::string& line, ConfigOption& option) {
    if (line.find_first_not_of(' ') == std::string::npos) return false;
    if (line.size() < 4) return false;
    if (text::upper(line.substr(0, 4)) != "SET ") return false;
    // The name runs from the fifth character to the next blank; the value is everything after
    // that blank, untrimmed, so a trailing comment is part of it.
    const size_t blank = line.find(' ', 4);
    if (blank == std::string::npos) return false;
    option.name = line.substr(4, blank - 4);
    option.value = line.substr(blank + 1);
    option.checked = false;
    return true;
}

namespace {
// Falcon's own configuration files run to a few hundred KiB.
constexpr qint64 kMaxConfigFileBytes = qint64(4) << 20;
} // namespace

VbList<ConfigOption> readConfigOptions(const QString& localPath) {
    VbList<ConfigOption> options;
    for (const std::string& line : readRawLines(localPath, kMaxConfigFileBytes)) {
        ConfigOption option;
        if (parseConfigLine(line, option)) options.append(std::move(option));
    }
    return options;
}
