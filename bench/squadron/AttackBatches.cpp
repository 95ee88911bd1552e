#include "AttackBatches.h"

#include "AiRecords.h"

#include <cstdio>

namespace attackbatch {

std::string simnew(int count) {
    return repeated("SIMNEW", "h@32767", count);
}

std::string validr(int count, uint64_t first) {
    std::string out;
    out.reserve(size_t(count) * 13);
    char line[16];
    for (int i = 0; i < count; ++i) {
        std::snprintf(line, sizeof line, "VALIDRH%05u", unsigned((first + uint64_t(i)) % 100000));
        out.append(line, 12).push_back('\0');
    }
    return out;
}

std::string repeated(const std::string& command, const std::string& data, int count) {
    std::string one = command + data;
    one.push_back('\0');
    std::string out;
    out.reserve(one.size() * size_t(count));
    for (int i = 0; i < count; ++i)
        out += one;
    return out;
}

// Records laid out as the honest AI Spy's (see AiRecords.h): a filler line, the name line,
// the speed/heading line and the altitude line, 60 characters in all.
std::string aiUpdateWithNul(int aircraft) {
    std::string out;
    for (int a = 1; a <= aircraft; ++a) {
        const std::string altitude = a == aircraft ? std::string("FL \0DISCON", 10) : "FL 000000000100";
        const std::string body = "12*" + std::string(airecords::kHostileName) + "\r\n000/000K\n" + altitude;
        out +=
            "Typhoon" + std::string(airecords::kRecordChars - 2 - 7 - body.size(), '.') + "\n" + body + "\n";
    }
    return out;
}

} // namespace attackbatch
