#include "AiRecords.h"

#include <cstdio>

namespace airecords {
namespace {

bool digits(std::string_view s, uint64_t& out) {
    if (s.empty()) return false;
    out = 0;
    for (char c : s) {
        if (c < '0' || c > '9') return false;
        out = out * 10 + uint64_t(c - '0');
    }
    return true;
}

struct Record {
    int aircraft;
    int stream;
    uint32_t seq;
    uint64_t sentAtUs;
};

bool parseRecord(std::string_view r, Record& out) {
    uint64_t aircraft, seq, stream, at;
    if (r.size() != kConvertedChars || r[0] != 'A') return false;
    if (!digits(r.substr(1, 2), aircraft) || !digits(r.substr(3, 7), seq) ||
        !digits(r.substr(10, 6), stream) || !digits(r.substr(16, 12), at))
        return false;
    out = Record{int(aircraft), int(stream), uint32_t(seq), at};
    return true;
}

} // namespace

std::string buildUpdate(int stream, uint32_t seq, int aircraft, uint64_t sentAtUs) {
    std::string out;
    char name[32], middle[16], altitude[32];
    std::snprintf(middle, sizeof middle, "%03d/%03dK", (stream / 1000) % 1000, stream % 1000);
    std::snprintf(altitude, sizeof altitude, "FL %012llu",
                  static_cast<unsigned long long>(sentAtUs % 1000000000000ULL));
    for (int a = 1; a <= aircraft; ++a) {
        std::snprintf(name, sizeof name, "12*A%02d%07u", a % 100, seq % 10000000u);
        std::string body = std::string(name) + "\r\n" + middle + "\n" + altitude;
        std::string record =
            "Typhoon" + std::string(kRecordChars - 2 - 7 - body.size(), '.') + "\n" + body + "\n";
        out += record;
    }
    return out;
}

Parsed parseConverted(std::string_view text, int aircraft) {
    Parsed p;
    Record first{};
    int whole = 0;
    for (size_t off = 0; off + kConvertedChars <= text.size() && whole < aircraft; off += kConvertedChars) {
        Record r{};
        if (!parseRecord(text.substr(off, kConvertedChars), r) || r.aircraft != whole + 1) break;
        if (whole == 0)
            first = r;
        else if (r.seq != first.seq || r.stream != first.stream)
            break;
        ++whole;
    }
    if (whole == 0) return p;
    p.stream = first.stream;
    p.seq = first.seq;
    p.sentAtUs = first.sentAtUs;
    p.aircraft = whole;
    if (whole == aircraft && text.size() == size_t(aircraft) * kConvertedChars)
        p.outcome = Parsed::Whole;
    else if (whole == aircraft)
        p.outcome = Parsed::Merged;
    return p;
}

} // namespace airecords
