#include "setups/InstallationCheck.h"

#include "basics/RuntimeError.h"
#include "basics/Text.h"
#include "discovery/InstalledFile.h"
#include "setups/Checksum.h"
#include "setups/authoring/ConfigOptions.h"

#include <QFileInfo>

namespace {
std::string_view withoutTrailingBlanks(std::string_view s) {
    const size_t end = s.find_last_not_of(' ');
    return end == std::string_view::npos ? std::string_view() : s.substr(0, end + 1);
}

std::string fieldOr(const VbList<std::string>& fields, int k) {
    const std::string* field = fields.find(k);
    return field ? *field : std::string();
}
} // namespace

InstallationCheck InstallationCheck::ofThisMachine() {
    FalconInstallation falcon;
    readInstallationKey(falcon);
    chooseConfigFile(falcon);
    return InstallationCheck(std::move(falcon));
}

InstallationCheck::InstallationCheck(FalconInstallation falcon) : falcon_(std::move(falcon)) {
    try {
        config_ = readConfigOptions(localFilePath(falcon_.configFile));
    } catch (const RuntimeError&) {
        // No configuration file: every CONFIG line fails.
    }
}

LineVerdict InstallationCheck::check(std::string_view line) const {
    const VbList<std::string> fields = text::splitAt(line);
    const std::string& kind = fields[1];
    // A line that lacks the field it is about cannot match anything.
    const std::optional<std::string> value =
        fields.ubound() >= 2 ? std::optional<std::string>(fields[2]) : std::nullopt;
    auto verdict = [](bool matches) { return matches ? LineVerdict::Matches : LineVerdict::Fails; };

    if (kind == "CURSET") return verdict(value == falcon_.flavour);
    if (kind == "CURTHE") return verdict(value == falcon_.theater);
    if (kind == "CHKSIM") return verdict(!QFileInfo(localFilePath(falcon_.baseDir + "Sim")).isDir());
    if (kind == "CHKSUM") {
        if (!value) return LineVerdict::Fails;
        const QString local = installedFilePath(falcon_.baseDir, *value);
        if (local.isEmpty()) return LineVerdict::Fails;
        try {
            return verdict(fileChecksumText(local) == fieldOr(fields, 3));
        } catch (const RuntimeError&) {
            return LineVerdict::Fails; // unreadable counts as absent
        }
    }
    if (kind == "CONFIG") {
        if (!value) return LineVerdict::Fails;
        // The value is the rest of the line, so a value holding "@" (in a trailing comment, say)
        // is compared whole.
        const size_t at = line.find('@', kind.size() + 1 + value->size());
        if (at == std::string_view::npos) return LineVerdict::Fails;
        return verdict(configHolds(*value, line.substr(at + 1)));
    }
    return LineVerdict::NotChecked;
}

bool InstallationCheck::configHolds(const std::string& entry, std::string_view value) const {
    if (!config_) return false;
    // The catalogue trims its lines, so a value that ended in blanks in the configuration file
    // is offered without them: blanks at the end do not count on either side. An entry set
    // more than once matches when any of its lines has the value, so a setup made from this
    // installation verifies against it whichever of them was ticked.
    for (int i = 1; i <= config_->ubound(); ++i) {
        const ConfigOption& option = (*config_)[i];
        if (option.name == entry && withoutTrailingBlanks(option.value) == withoutTrailingBlanks(value))
            return true;
    }
    return false;
}
