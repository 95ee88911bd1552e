#include "basics/Timestamp.h"

#include <cstdio>
#include <ctime>

std::string logTimestamp() {
    // Formatting a date costs more than relaying a message, so a busy log reuses the text
    // within the same second.
    static time_t cachedSecond = -1;
    static std::string cached;
    time_t now = std::time(nullptr);
    if (now != cachedSecond) {
        std::tm tm{};
#ifdef _WIN32
        localtime_s(&tm, &now);
#else
        localtime_r(&now, &tm);
#endif
        char buf[96];
        std::snprintf(buf, sizeof buf, "%02d/%02d/%04d - %02d:%02d:%02d", tm.tm_mon + 1, tm.tm_mday,
                      tm.tm_year + 1900, tm.tm_hour, tm.tm_min, tm.tm_sec);
        cached = buf;
        cachedSecond = now;
    }
    return cached;
}
