#include "setups/FailureSentence.h"

#include "basics/Text.h"

std::string failureSentence(std::string_view line) {
    const VbList<std::string> fields = text::splitAt(line);
    const std::string& kind = fields[1];
    if (kind == "CURSET") return "Your current setup is different";
    if (kind == "CURTHE") return "Your currently selected theater is different";
    if (kind == "CONFIG") return "The " + fields[2] + " entry in cofig file is differrent or absent";
    if (kind == "CHKSUM") return "The " + fields[2] + " file is differrent or absent";
    if (kind == "CHKSIM") return "There is a directory called 'Sim' in your setup. Please delete it...";
    return {};
}
