#include "Context.h"

#include "Conn.h"

#include <arpa/inet.h>

#include <charconv>
#include <cstdio>

namespace {

sockaddr_in loopbackAddress(const std::string& host, int port) {
    sockaddr_in a{};
    a.sin_family = AF_INET;
    a.sin_port = htons(uint16_t(port));
    inet_pton(AF_INET, host.c_str(), &a.sin_addr);
    return a;
}

bool number(std::string_view& s, uint64_t& v) {
    auto [p, ec] = std::from_chars(s.data(), s.data() + s.size(), v);
    if (ec != std::errc() || p == s.data()) return false;
    s.remove_prefix(size_t(p - s.data()));
    return true;
}

} // namespace

Context::Context(const Options& o)
    : opt(o), ledger(int64_t(o.marginMs * 1e6), int64_t(o.marginMs * 1e6)), rng(o.seed),
      playerAddr(loopbackAddress(o.host, o.playerPort)), awacsAddr(loopbackAddress(o.host, o.awacsPort)),
      simAddr(loopbackAddress(o.host, o.simPort)), aiAddr(loopbackAddress(o.host, o.aiPort)) {
    inet_pton(AF_INET, o.attackSource.c_str(), &attackSource);
    // On loopback every 127/8 address is this machine's: the squadron's members come from
    // addresses of their own, as they do from their homes, and the hostile peer from another.
    if (o.sources > 0 && o.host.rfind("127.", 0) == 0) {
        in_addr first{};
        inet_pton(AF_INET, "127.0.1.1", &first);
        Conn::spreadSources(first, o.sources);
    }
}

const sockaddr_in& Context::address(Port port) const {
    switch (port) {
    case Port::Player:
        return playerAddr;
    case Port::Awacs:
        return awacsAddr;
    case Port::Sim:
        return simAddr;
    case Port::Ai:
        break;
    }
    return aiAddr;
}

bool Context::serverSends(Port port, std::string_view command) {
    static constexpr std::string_view player[] = {"PLSNEW", "PLSDEL", "PLSUPD", "PLRDIM", "PLSADD", "PLDONE",
                                                  "AWANUM", "SIMNUM", "SLRDIM", "SLSADD", "SLDONE", "VLRDIM",
                                                  "VLSADD", "VLDONE", "ERRRDM", "ERRADD", "ERRDON", "SYNCRO"};
    static constexpr std::string_view awacs[] = {"NEWCLT", "DELCLT", "INDATA", "AILOCA", "SYNCRO"};
    if (command == "SYNCRO") return true;
    switch (port) {
    case Port::Player:
        for (auto c : player)
            if (c == command) return true;
        return false;
    case Port::Awacs:
        for (auto c : awacs)
            if (c == command) return true;
        return false;
    case Port::Sim:
    case Port::Ai:
        break;
    }
    return false;
}

void Context::screen(Port port, std::string_view command) {
    command = command.substr(0, 6);
    if (command == (port == Port::Ai ? "CLOSE1" : "DISCON")) {
        if (stopping)
            ++shutdownNotices;
        else
            ++anomalies.injected;
    } else if (!serverSends(port, command)) {
        ++anomalies.injected;
    }
}

int Context::openStream(char kind, const std::string& owner) {
    int id = ledger.openStream(nowNs());
    owners.push_back(StreamOwner{kind, owner});
    return id;
}

std::string Context::stamp(int stream, uint32_t seq, int64_t sentAt) const {
    char buf[96];
    int n = std::snprintf(buf, sizeof buf, "%c%d#%u#%lld", owners[size_t(stream)].kind, stream, seq,
                          static_cast<long long>(sentAt));
    std::string s(buf, size_t(n));
    if (int(s.size()) + 1 < opt.payload) s += "#" + std::string(size_t(opt.payload) - s.size() - 1, 'x');
    return s;
}

bool Context::parseStamp(std::string_view text, Stamp& out) {
    if (text.empty() || (text[0] != 'P' && text[0] != 'S')) return false;
    out.kind = text[0];
    text.remove_prefix(1);
    uint64_t stream, seq, at;
    if (!number(text, stream) || text.empty() || text[0] != '#') return false;
    text.remove_prefix(1);
    if (!number(text, seq) || text.empty() || text[0] != '#') return false;
    text.remove_prefix(1);
    if (!number(text, at)) return false;
    if (!text.empty()) {
        if (text[0] != '#') return false;
        for (char c : text.substr(1))
            if (c != 'x') return false;
    }
    out.stream = int(stream);
    out.seq = uint32_t(seq);
    out.sentAt = int64_t(at);
    return true;
}
