#include "SimPeer.h"

#include <algorithm>

SimPeer::SimPeer(Context& ctx, int index)
    : ctx_(ctx), name_("SIM" + std::to_string(index + 1)),
      conn_(ctx.loop, Conn::Callbacks{[this] { onConnected(); },
                                      [this](std::string_view m) {
                                          ctx_.tally.received(m);
                                          ctx_.screen(Port::Sim, m);
                                          if (m.substr(0, 6) == "SYNCRO") ++syncro_;
                                      },
                                      [this] { onClosed(); },
                                      [this](const SendTag& t) {
                                          if (t.kind == SendTag::Stream)
                                              ctx_.ledger.markSplit(t.stream, t.seq);
                                      }}) {}

void SimPeer::join() {
    if (present_) return;
    ++epoch_;
    if (!conn_.open(ctx_.simAddr)) {
        ++ctx_.anomalies.connectFailed;
        return;
    }
    present_ = true;
}

void SimPeer::send(std::string_view command, std::string_view data) {
    std::string m(command);
    m.append(data).push_back('\0');
    conn_.send(m);
    ctx_.tally.sent(command);
}

void SimPeer::onConnected() {
    ++sessions_;
    streams_.assign(size_t(ctx_.opt.simPlaces) + 1, -1);
    send("SIMNEW", name_ + "@" + std::to_string(ctx_.opt.simPlaces));
    for (int place = 1; place <= std::min(ctx_.opt.simPlanes, ctx_.opt.simPlaces); ++place)
        addAirplane(place);
    if (ctx_.opt.planeChurnS > 0) {
        const int epoch = epoch_;
        ctx_.loop.after(ctx_.seconds(ctx_.uniform(0.5, 1.5) * ctx_.opt.planeChurnS),
                        [this, epoch] { churnAirplane(epoch); });
    }
}

void SimPeer::addAirplane(int place) {
    send("ADDAIR", std::to_string(place));
    const int stream = ctx_.openStream('S', name_);
    streams_[size_t(place)] = stream;
    if (ctx_.opt.simHz <= 0) return;
    const int epoch = epoch_;
    const int64_t first = nowNs() + int64_t(ctx_.uniform(0, 1e9 / ctx_.opt.simHz));
    ctx_.loop.at(first, [this, epoch, place, stream, first] { tick(epoch, place, stream, first); });
}

void SimPeer::removeAirplane(int place) {
    // The stream ends before DELAIR leaves: every SIMLOC queued so far is still owed.
    ctx_.ledger.closeStream(streams_[size_t(place)], nowNs());
    streams_[size_t(place)] = -1;
    send("DELAIR", std::to_string(place));
}

void SimPeer::tick(int epoch, int place, int stream, int64_t due) {
    if (epoch != epoch_ || streams_[size_t(place)] != stream || !conn_.isOpen() || !ctx_.sending()) return;
    const int64_t now = nowNs();
    const uint32_t seq = ctx_.ledger.recordSent(stream, now);
    std::string m = "SIMLOC" + std::to_string(place) + "@" + ctx_.stamp(stream, seq, now);
    m.push_back('\0');
    conn_.send(m, SendTag{SendTag::Stream, stream, seq});
    ctx_.tally.sent("SIMLOC");
    ++simloc_;
    const int64_t period = int64_t(1e9 / ctx_.opt.simHz), next = std::max(due + period, now - period);
    ctx_.loop.at(next, [this, epoch, place, stream, next] { tick(epoch, place, stream, next); });
}

// An airplane lands and, a moment later, another takes off from a free place.
void SimPeer::churnAirplane(int epoch) {
    if (epoch != epoch_ || !conn_.isOpen() || !ctx_.sending()) return;
    std::vector<int> flying, free;
    for (int p = 1; p < int(streams_.size()); ++p)
        (streams_[size_t(p)] >= 0 ? flying : free).push_back(p);
    if (!flying.empty()) removeAirplane(flying[size_t(ctx_.pick(int(flying.size())))]);
    if (!free.empty()) {
        const int place = free[size_t(ctx_.pick(int(free.size())))];
        ctx_.loop.after(kSec, [this, epoch, place] {
            if (epoch == epoch_ && conn_.isOpen() && ctx_.sending()) addAirplane(place);
        });
    }
    ctx_.loop.after(ctx_.seconds(ctx_.uniform(0.5, 1.5) * ctx_.opt.planeChurnS),
                    [this, epoch] { churnAirplane(epoch); });
}

void SimPeer::endSession() {
    const int64_t now = nowNs();
    for (int& s : streams_)
        if (s >= 0) {
            ctx_.ledger.closeStream(s, now);
            s = -1;
        }
    ++epoch_;
    present_ = false;
}

void SimPeer::leave() {
    if (!present_) return;
    endSession();
    if (conn_.isOpen()) {
        send("SIMEND", "");
        // SIMEND makes the server drop the client; give it the moment to arrive.
        const int epoch = epoch_;
        ctx_.loop.after(200 * kMs, [this, epoch] {
            if (epoch == epoch_) conn_.close();
        });
        return;
    }
    conn_.close();
}

void SimPeer::onClosed() {
    if (!present_) return;
    if (ctx_.sending()) ++ctx_.anomalies.unexpectedClose;
    endSession();
}
