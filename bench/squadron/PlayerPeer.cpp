#include "PlayerPeer.h"

#include <algorithm>
#include <cstdio>

namespace {
enum Step { Register, List, Setups, OneSetup, Verdict, OwnErrors, Done };
}

PlayerPeer::PlayerPeer(Context& ctx, int index)
    : ctx_(ctx), name_("Pilot" + std::to_string(index + 1)),
      conn_(ctx.loop, Conn::Callbacks{[this] { onConnected(); }, [this](std::string_view m) { onMessage(m); },
                                      [this] { onClosed(); },
                                      [this](const SendTag& t) {
                                          if (t.kind == SendTag::Stream)
                                              ctx_.ledger.markSplit(t.stream, t.seq);
                                          else
                                              requestSplit_ = true;
                                      }}),
      check_(name_) {}

void PlayerPeer::join() {
    if (present_) return;
    ++epoch_;
    if (!conn_.open(ctx_.playerAddr)) {
        ++ctx_.anomalies.connectFailed;
        return;
    }
    present_ = true;
}

void PlayerPeer::send(std::string_view command, std::string_view data, SendTag::Kind kind) {
    std::string m;
    m.reserve(command.size() + data.size() + 1);
    m.append(command).append(data).push_back('\0');
    conn_.send(m, SendTag{kind, -1, 0});
    ctx_.tally.sent(command);
}

void PlayerPeer::onConnected() {
    ++counts_.sessions;
    check_.reset();
    stage_ = Register;
    step(epoch_);
    stream_ = ctx_.openStream('P', name_);
    period_ = int64_t(1e9 / ctx_.uniform(ctx_.opt.f4HzMin, ctx_.opt.f4HzMax));
    const int epoch = epoch_;
    const int64_t first = nowNs() + int64_t(ctx_.uniform(0, 1) * double(period_));
    ctx_.loop.at(first, [this, epoch, first] { tick(epoch, first); });
}

// Each send is due one period after the previous one was due, so the rate holds however
// late the loop wakes up.
void PlayerPeer::tick(int epoch, int64_t due) {
    if (epoch != epoch_ || !conn_.isOpen() || !ctx_.sending()) return;
    const int64_t now = nowNs();
    const uint32_t seq = ctx_.ledger.recordSent(stream_, now);
    std::string m = "F4LOCA" + ctx_.stamp(stream_, seq, now);
    m.push_back('\0');
    conn_.send(m, SendTag{SendTag::Stream, stream_, seq});
    ctx_.tally.sent("F4LOCA");
    ++counts_.f4loca;
    const int64_t next = std::max(due + period_, now - period_);
    ctx_.loop.at(next, [this, epoch, next] { tick(epoch, next); });
}

void PlayerPeer::awaitReply(ReplyCheck::Kind kind, int position, int expectedCount, std::string mark) {
    check_.expect(kind, position, expectedCount, std::move(mark));
    requestSplit_ = false;
    const uint64_t id = ++checkId_;
    const int epoch = epoch_;
    ctx_.loop.after(ctx_.seconds(ctx_.opt.replyTimeout), [this, id, epoch] {
        if (epoch != epoch_ || id != checkId_ || check_.pending() == ReplyCheck::Kind::None) return;
        check_.abandon();
        if (requestSplit_)
            ++counts_.excused;
        else
            ++counts_.timedOut;
        if (ctx_.opt.verbose) std::fprintf(stderr, "%s: no whole reply to step %d\n", name_.c_str(), stage_);
        step(epoch);
    });
}

// One request of the exchange; the next goes out when its reply is complete.
void PlayerPeer::step(int epoch) {
    if (epoch != epoch_ || !conn_.isOpen()) return;
    switch (stage_++) {
    case Register:
        send("VALIDR", name_);
        awaitReply(ReplyCheck::Kind::Register);
        return;
    case List:
        send("GETLST", "");
        awaitReply(ReplyCheck::Kind::PlayerList);
        return;
    case Setups:
        send("GETVLA", "");
        awaitReply(ReplyCheck::Kind::SetupList);
        return;
    case OneSetup:
        if (check_.setupCount() > 0) {
            int offered = check_.setupCount();
            if (ctx_.opt.playerSetups > 0) offered = std::min(offered, ctx_.opt.playerSetups);
            send("GETVLO", std::to_string(1 + ctx_.pick(offered)));
            awaitReply(ReplyCheck::Kind::Setup);
            return;
        }
        ++stage_;
        [[fallthrough]];
    case Verdict: {
        // Half of the pilots find nothing wrong; the others report one to three failed lines.
        const int lines = check_.lineCount();
        reportedErrors_ = lines > 0 && ctx_.pick(2) ? 1 + ctx_.pick(3) : 0;
        if (reportedErrors_ > 0) {
            send("ERRRDM", std::to_string(reportedErrors_));
            for (int i = reportedErrors_; i >= 1; --i)
                send("ERRADD", std::to_string(i) + "@" + std::to_string(1 + ctx_.pick(lines)));
            send("ERRDON", "");
            send("VERNOK", "");
        } else {
            send("ERRRDM", "0");
            send("VERFOK", "");
        }
        awaitReply(ReplyCheck::Kind::Verdict, 0, -1, reportedErrors_ ? "X" : "O");
        return;
    }
    case OwnErrors:
        if (check_.ownPosition() > 0) {
            send("ERRGET", std::to_string(check_.ownPosition()));
            awaitReply(ReplyCheck::Kind::ErrorList, check_.ownPosition(), reportedErrors_);
            return;
        }
        ++stage_;
        [[fallthrough]];
    default:
        // Validated: check again later, as a pilot who switched setups would.
        stage_ = List;
        if (ctx_.opt.revalidateS > 0)
            ctx_.loop.after(ctx_.seconds(ctx_.uniform(0.5, 1.5) * ctx_.opt.revalidateS),
                            [this, epoch] { step(epoch); });
        return;
    }
}

void PlayerPeer::settle(ReplyCheck::Result r) {
    ++checkId_;
    if (r == ReplyCheck::Result::Ok)
        ++counts_.ok;
    else if (requestSplit_)
        ++counts_.excused;
    else
        ++counts_.bad;
    if (r == ReplyCheck::Result::Bad && ctx_.opt.verbose)
        std::fprintf(stderr, "%s: wrong reply at step %d\n", name_.c_str(), stage_ - 1);
    const int epoch = epoch_;
    ctx_.loop.after(ctx_.seconds(ctx_.uniform(0.05, 0.3)), [this, epoch] { step(epoch); });
}

void PlayerPeer::onMessage(std::string_view m) {
    ctx_.tally.received(m);
    ctx_.screen(Port::Player, m);
    std::string_view command = m.substr(0, 6), data = m.size() > 6 ? m.substr(6) : std::string_view();
    if (command == "DISCON") return;
    if (command == "SYNCRO") {
        ++counts_.syncro;
        return;
    }
    auto r = check_.feed(command, data);
    if (r != ReplyCheck::Result::Pending) settle(r);
}

void PlayerPeer::endSession() {
    if (stream_ >= 0) ctx_.ledger.closeStream(stream_, nowNs());
    stream_ = -1;
    check_.abandon();
    ++epoch_;
    present_ = false;
}

void PlayerPeer::leave(bool graceful) {
    if (!present_) return;
    if (graceful && conn_.isOpen()) send("VALEND", "");
    endSession();
    if (graceful && conn_.queuedBytes() > 0) {
        // Let VALEND reach the server before the connection goes.
        const int epoch = epoch_;
        ctx_.loop.after(200 * kMs, [this, epoch] {
            if (epoch == epoch_) conn_.close();
        });
        return;
    }
    conn_.close();
}

void PlayerPeer::onClosed() {
    if (!present_) return; // after VALEND the server closes, as it should
    if (ctx_.sending()) ++ctx_.anomalies.unexpectedClose;
    endSession();
}
