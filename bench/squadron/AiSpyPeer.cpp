#include "AiSpyPeer.h"

#include "AiRecords.h"

#include <algorithm>

AiSpyPeer::AiSpyPeer(Context& ctx)
    : ctx_(ctx), conn_(ctx.loop, Conn::Callbacks{[this] { onConnected(); },
                                                 [this](std::string_view m) {
                                                     ctx_.tally.received(m);
                                                     ctx_.screen(Port::Ai, m);
                                                     if (m.substr(0, 6) == "SYNCRO") ++syncro_;
                                                 },
                                                 [this] {
                                                     if (present_ && ctx_.sending())
                                                         ++ctx_.anomalies.unexpectedClose;
                                                     endSession();
                                                 },
                                                 [this](const SendTag& t) {
                                                     if (t.kind == SendTag::Stream)
                                                         ctx_.ledger.markSplit(t.stream, t.seq);
                                                 }}) {}

void AiSpyPeer::join() {
    if (present_) return;
    ++epoch_;
    if (!conn_.open(ctx_.aiAddr)) {
        ++ctx_.anomalies.connectFailed;
        return;
    }
    present_ = true;
}

void AiSpyPeer::onConnected() {
    ++sessions_;
    stream_ = ctx_.openStream('A', "AISPY");
    const int epoch = epoch_;
    // The server takes the link once it sees the request; give it a moment before the first update.
    const int64_t first = nowNs() + 200 * kMs;
    ctx_.loop.at(first, [this, epoch, first] { tick(epoch, first); });
}

void AiSpyPeer::tick(int epoch, int64_t due) {
    if (epoch != epoch_ || !conn_.isOpen() || !ctx_.sending()) return;
    const int64_t now = nowNs();
    const uint32_t seq = ctx_.ledger.recordSent(stream_, now);
    std::string m = "AIUPDT" + airecords::buildUpdate(stream_, seq, ctx_.opt.aiAircraft,
                                                      uint64_t(now - ctx_.runStart) / 1000);
    m.push_back('\0');
    conn_.send(m, SendTag{SendTag::Stream, stream_, seq});
    ctx_.tally.sent("AIUPDT");
    ++updates_;
    const int64_t period = int64_t(1e9 / ctx_.opt.aiHz), next = std::max(due + period, now - period);
    ctx_.loop.at(next, [this, epoch, next] { tick(epoch, next); });
}

void AiSpyPeer::endSession() {
    if (stream_ >= 0) ctx_.ledger.closeStream(stream_, nowNs());
    stream_ = -1;
    ++epoch_;
    present_ = false;
}

void AiSpyPeer::leave() {
    if (!present_) return;
    endSession();
    conn_.close();
}
