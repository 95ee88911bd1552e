#include "AwacsPeer.h"

#include "AiRecords.h"

#include <charconv>

namespace {
// A stalled client's socket holds little, so the server's own queue for it fills soon.
constexpr int kStalledReceiveBuffer = 4096;

bool leadingSlot(std::string_view& data, int& slot) {
    auto [p, ec] = std::from_chars(data.data(), data.data() + data.size(), slot);
    if (ec != std::errc() || p == data.data()) return false;
    data.remove_prefix(size_t(p - data.data()));
    return true;
}
} // namespace

AwacsPeer::AwacsPeer(Context& ctx, int index, bool stalled)
    : ctx_(ctx), index_(index), stalled_(stalled),
      conn_(ctx.loop, Conn::Callbacks{[this] { onConnected(); }, [this](std::string_view m) { onMessage(m); },
                                      [this] { onClosed(); }, nullptr}) {}

void AwacsPeer::join() {
    if (present_ && leaving_) {
        conn_.close();
        present_ = false;
    }
    if (present_) return;
    ++epoch_;
    leaving_ = false;
    for (auto& a : announced_)
        a.clear();
    if (!conn_.open(ctx_.awacsAddr, stalled_ ? kStalledReceiveBuffer : 0)) {
        ++ctx_.anomalies.connectFailed;
        return;
    }
    present_ = true;
}

void AwacsPeer::onConnected() {
    conn_.send(std::string_view("NAWACS\0", 7));
    ctx_.tally.sent("NAWACS");
    if (!stalled_) {
        receiver_ = ctx_.ledger.openReceiver(nowNs());
        receivers_.push_back(receiver_);
    } else {
        const int epoch = epoch_;
        ctx_.loop.at(ctx_.runStart + ctx_.seconds(ctx_.opt.stallAfter), [this, epoch] {
            if (epoch == epoch_) conn_.setReading(false);
        });
    }
}

void AwacsPeer::endSession(int64_t at) {
    if (receiver_ >= 0) ctx_.ledger.closeReceiver(receiver_, at);
    receiver_ = -1;
}

void AwacsPeer::leave(bool graceful) {
    if (!present_ || leaving_) return;
    const int64_t now = nowNs();
    if (graceful && conn_.isOpen()) {
        leaving_ = true;
        conn_.send(std::string_view("AWAEND\0", 7));
        ctx_.tally.sent("AWAEND");
        endSession(now);
        // The server closes the connection; what it had queued still arrives before that.
        const int epoch = epoch_;
        ctx_.loop.after(5 * kSec, [this, epoch] {
            if (epoch == epoch_ && leaving_) {
                conn_.close();
                present_ = false;
            }
        });
        return;
    }
    endSession(now);
    conn_.close();
    present_ = false;
}

void AwacsPeer::onClosed() {
    if (!leaving_ && !stalled_ && ctx_.sending()) ++ctx_.anomalies.unexpectedClose;
    endSession(nowNs());
    present_ = false;
    leaving_ = false;
}

void AwacsPeer::onMessage(std::string_view m) {
    if (stalled_) return;
    ctx_.tally.received(m);
    ctx_.screen(Port::Awacs, m);
    std::string_view command = m.substr(0, 6), data = m.size() > 6 ? m.substr(6) : std::string_view();
    const int64_t now = nowNs();
    if (command == "INDATA") {
        onIndata(data, now);
    } else if (command == "AILOCA") {
        onAiloca(data, now);
    } else if (command == "NEWCLT") {
        int slot = 0;
        if (leadingSlot(data, slot) && !data.empty() && data[0] == '@' && slot >= 0 &&
            slot < int(announced_.size()))
            announced_[size_t(slot)] = std::string(data.substr(1));
    } else if (command == "DELCLT") {
        int slot = 0;
        if (leadingSlot(data, slot) && slot >= 0 && slot < int(announced_.size()))
            announced_[size_t(slot)].clear();
    } else if (command == "SYNCRO") {
        ++syncro_;
    }
}

void AwacsPeer::onIndata(std::string_view data, int64_t now) {
    ++indata_;
    int slot = 0;
    Context::Stamp s{};
    if (!leadingSlot(data, slot) || data.empty() || data[0] != '@' ||
        !Context::parseStamp(data.substr(1), s)) {
        ++ctx_.anomalies.corrupt;
        return;
    }
    if (!ctx_.ledger.hasStream(s.stream) || ctx_.owners[size_t(s.stream)].kind != s.kind) {
        ++ctx_.anomalies.unknownStream;
        return;
    }
    ++ctx_.indataOwnedByRun;
    // The number must be the one announced for that sender: a player's slot, or for an
    // airplane the number that follows the simulator's name.
    const std::string& who = ctx_.owners[size_t(s.stream)].name;
    const std::string& seen =
        slot >= 0 && slot < int(announced_.size()) ? announced_[size_t(slot)] : std::string();
    if (seen.empty())
        ++ctx_.anomalies.unannounced;
    else if (seen != (s.kind == 'P' ? who : who + std::to_string(slot)))
        ++ctx_.anomalies.wrongNumber;
    if (receiver_ >= 0) ctx_.ledger.recordReceived(receiver_, s.stream, s.seq);
    if (now >= ctx_.measureFrom) {
        ctx_.latency.add(now - s.sentAt);
        ctx_.recentLatency.add(now - s.sentAt);
        if (now < ctx_.trafficEnd) ++ctx_.indataInWindow;
    }
}

void AwacsPeer::onAiloca(std::string_view data, int64_t now) {
    ++ailoca_;
    if (data.substr(0, airecords::kHostileName.size()) == airecords::kHostileName) {
        ++ctx_.hostileAiloca;
        return;
    }
    auto parsed = airecords::parseConverted(data, ctx_.opt.aiAircraft);
    if (parsed.outcome == airecords::Parsed::Corrupt) {
        ++ctx_.anomalies.corrupt;
        return;
    }
    if (!ctx_.ledger.hasStream(parsed.stream) || ctx_.owners[size_t(parsed.stream)].kind != 'A') {
        ++ctx_.anomalies.unknownStream;
        return;
    }
    if (parsed.outcome == airecords::Parsed::Merged) {
        // The next update was read together with this one and converted into garbage.
        ++ctx_.anomalies.aiMerged;
        ctx_.ledger.markSplit(parsed.stream, parsed.seq + 1);
    }
    if (receiver_ >= 0) ctx_.ledger.recordReceived(receiver_, parsed.stream, parsed.seq);
    if (now >= ctx_.measureFrom) ctx_.aiLatency.add(now - int64_t(parsed.sentAtUs) * 1000 - ctx_.runStart);
}
