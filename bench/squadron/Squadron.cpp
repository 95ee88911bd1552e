#include "Squadron.h"

#include <csignal>
#include <cstdio>

namespace {
constexpr int kSlots = 48;
}

Squadron::Squadron(const Options& options) : ctx_(options), newcomers_(ctx_), probe_(options.serverPid) {
    const Options& o = ctx_.opt;
    for (int i = 0; i < o.players; ++i)
        players_.push_back(std::make_unique<PlayerPeer>(ctx_, i));
    for (int i = 0; i < o.awacs + o.stalled; ++i)
        awacs_.push_back(std::make_unique<AwacsPeer>(ctx_, i, i >= o.awacs));
    for (int i = 0; i < o.sims; ++i)
        sims_.push_back(std::make_unique<SimPeer>(ctx_, i));
    if (o.aiSpy && !attackTakesAiSpy(o.attack)) ai_ = std::make_unique<AiSpyPeer>(ctx_);
    if (o.attack != "none") attack_ = makeAttack(ctx_, o.attack);
    // Players and airplanes share the numbers 1..48, and a rogue on the player port takes one.
    const int numbers =
        o.players + o.sims * std::min(o.simPlanes, o.simPlaces) + (o.rogues != "none" ? 1 : 0);
    if (numbers > kSlots)
        std::fprintf(stderr,
                     "squadron: warning: %d player slots and airplane numbers wanted, the server has %d\n",
                     numbers, kSlots);
    if (o.awacs + o.stalled + (o.rogues != "none" ? 1 : 0) > kSlots)
        std::fprintf(stderr, "squadron: warning: more AWACS connections than the server's %d slots\n",
                     kSlots);
}

double Squadron::secondsSinceStart() const {
    return double(nowNs() - ctx_.runStart) / 1e9;
}

// AWACS clients first, so that they are listed before positions flow; the simulators one by
// one, in slot order; then the AI Spy and the players.
void Squadron::scheduleJoins() {
    const int64_t t0 = ctx_.runStart;
    for (size_t i = 0; i < awacs_.size(); ++i)
        ctx_.loop.at(t0 + int64_t(i) * 20 * kMs, [this, i] { awacs_[i]->join(); });
    const int64_t simStart = t0 + int64_t(awacs_.size()) * 20 * kMs + 100 * kMs;
    for (size_t i = 0; i < sims_.size(); ++i)
        ctx_.loop.at(simStart + int64_t(i) * 200 * kMs, [this, i] { sims_[i]->join(); });
    const int64_t rest = simStart + int64_t(sims_.size()) * 200 * kMs;
    if (ai_) ctx_.loop.at(rest, [this] { ai_->join(); });
    for (size_t i = 0; i < players_.size(); ++i)
        ctx_.loop.at(rest + int64_t(i) * 20 * kMs, [this, i] { players_[i]->join(); });
}

void Squadron::scheduleChurn() {
    const Options& o = ctx_.opt;
    if (o.churnPerMin > 0) {
        const double gap = std::exponential_distribution<double>(o.churnPerMin / 60.0)(ctx_.rng);
        ctx_.loop.after(ctx_.seconds(gap), [this] {
            if (!ctx_.sending()) return;
            churnOne();
            scheduleChurn();
        });
    }
}

// One pilot or one AWACS operator drops out (politely or not) and comes back a little later.
void Squadron::churnOne() {
    const Options& o = ctx_.opt;
    const bool graceful = ctx_.pick(2) == 0;
    const int64_t down = ctx_.seconds(ctx_.uniform(o.downMin, o.downMax));
    const int total = int(players_.size()) + o.awacs;
    if (total == 0) return;
    const int who = ctx_.pick(total);
    if (who < int(players_.size())) {
        PlayerPeer* p = players_[size_t(who)].get();
        if (!p->present()) return;
        p->leave(graceful);
        ctx_.loop.after(down, [this, p] {
            if (ctx_.sending()) {
                p->join();
                ++ctx_.rejoined;
            }
        });
    } else {
        AwacsPeer* a = awacs_[size_t(who - int(players_.size()))].get();
        if (!a->present()) return;
        a->leave(graceful);
        ctx_.loop.after(down, [this, a] {
            if (ctx_.sending()) {
                a->join();
                ++ctx_.rejoined;
            }
        });
    }
    ++ctx_.churned;
}

void Squadron::spawnRogue() {
    const Options& o = ctx_.opt;
    if (!ctx_.sending()) return;
    std::vector<RoguePeer::Kind> kinds{RoguePeer::Kind::Random, RoguePeer::Kind::Mega};
    if (o.rogues == "all") kinds.push_back(RoguePeer::Kind::Nuls);
    const auto kind = kinds[size_t(ctx_.pick(int(kinds.size())))];
    const bool playerPort = ctx_.pick(2) == 0;
    rogues_.push_back(std::make_unique<RoguePeer>(ctx_, kind, playerPort, o.rogues == "all"));
    rogues_.back()->start();
    ++rogueCounts_[std::string(RoguePeer::label(kind)) + (playerPort ? "@players" : "@awacs")];
    ctx_.loop.after(ctx_.seconds(ctx_.uniform(0.5, 1.5) * o.rogueEvery), [this] { spawnRogue(); });
}

void Squadron::sample() {
    if (!probe_.enabled() || ctx_.stopping) return;
    if (!probe_.sample(secondsSinceStart())) {
        std::fprintf(stderr, "squadron: the server (pid %d) is gone at %.1f s\n", ctx_.opt.serverPid,
                     secondsSinceStart());
        return;
    }
    ctx_.loop.after(ctx_.seconds(ctx_.opt.sampleEvery), [this] { sample(); });
}

LossTotals Squadron::lossesFor(const AwacsPeer& a, int64_t cutoff) const {
    LossTotals t;
    for (int r : a.receivers())
        t.add(ctx_.ledger.totalsFor(r, cutoff));
    return t;
}

void Squadron::periodicReport() {
    if (!ctx_.opt.quiet) {
        const LossTotals loss = ctx_.ledger.totals(nowNs() - 2 * kSec);
        uint64_t ok = 0, bad = 0, late = 0;
        for (auto& p : players_) {
            ok += p->counts().ok;
            bad += p->counts().bad;
            late += p->counts().timedOut;
        }
        char server[96] = "";
        if (!probe_.samples().empty())
            std::snprintf(server, sizeof server, "server rss %.1f MiB fds %d | ",
                          double(probe_.samples().back().rssKb) / 1024, probe_.samples().back().fds);
        std::printf(
            "[%5.0fs] %sINDATA %llu AILOCA %llu | owed %llu missing %llu (split %llu) | "
            "replies ok %llu bad %llu late %llu | INDATA p50 %.0f us p99 %.0f us, last %.0f s p99 %.0f us "
            "max %.0f us | churn %llu\n",
            secondsSinceStart(), server, (unsigned long long)ctx_.tally.receivedOf("INDATA"),
            (unsigned long long)ctx_.tally.receivedOf("AILOCA"), (unsigned long long)loss.owed,
            (unsigned long long)loss.missing(), (unsigned long long)loss.missingSplit, (unsigned long long)ok,
            (unsigned long long)bad, (unsigned long long)late, ctx_.latency.percentile(0.5) / 1e3,
            ctx_.latency.percentile(0.99) / 1e3, ctx_.opt.reportEvery,
            ctx_.recentLatency.percentile(0.99) / 1e3, double(ctx_.recentLatency.max()) / 1e3,
            (unsigned long long)ctx_.churned);
        ctx_.recentLatency = Histogram();
        std::fflush(stdout);
    }
    ctx_.loop.after(ctx_.seconds(ctx_.opt.reportEvery), [this] { periodicReport(); });
}

// Only the last simulator ever leaves: see SimPeer.
void Squadron::churnLastSim() {
    if (!ctx_.sending()) return;
    SimPeer* s = sims_.back().get();
    s->leave();
    ++ctx_.churned;
    ctx_.loop.after(ctx_.seconds(std::max(2.0, ctx_.uniform(ctx_.opt.downMin, ctx_.opt.downMax))), [this, s] {
        if (!ctx_.sending()) return;
        s->join();
        ++ctx_.rejoined;
    });
    ctx_.loop.after(ctx_.seconds(ctx_.uniform(0.5, 1.5) * ctx_.opt.simChurnS), [this] { churnLastSim(); });
}

// The AI Spy stays away long enough for the server to have seen it close.
void Squadron::churnAiSpy() {
    if (!ctx_.sending()) return;
    ai_->leave();
    ++ctx_.churned;
    ctx_.loop.after(3 * kSec, [this] {
        if (!ctx_.sending()) return;
        ai_->join();
        ++ctx_.rejoined;
    });
    ctx_.loop.after(ctx_.seconds(ctx_.uniform(0.5, 1.5) * ctx_.opt.aiChurnS), [this] { churnAiSpy(); });
}

// SIGTERM while every peer, hostile or not, is still connected: each well-behaved one is owed
// a DISCON (the AI Spy a CLOSE1), and the server should be gone within a few seconds.
void Squadron::stopServer() {
    if (!probe_.running()) return;
    for (auto& p : players_)
        noticesOwed_ += p->present() ? 1 : 0;
    for (auto& a : awacs_)
        noticesOwed_ += a->present() && !a->stalled() ? 1 : 0;
    for (auto& s : sims_)
        noticesOwed_ += s->present() ? 1 : 0;
    if (ai_) noticesOwed_ += ai_->present() ? 1 : 0;
    ctx_.stopping = true;
    const int64_t asked = nowNs();
    if (kill(ctx_.opt.serverPid, SIGTERM) != 0) return;
    stopSent_ = true;
    const int64_t deadline = asked + ctx_.seconds(ctx_.opt.stopWait);
    while (nowNs() < deadline && probe_.running())
        ctx_.loop.runUntil(std::min(deadline, nowNs() + 20 * kMs));
    if (!probe_.running()) shutdownS_ = double(nowNs() - asked) / 1e9;
    ctx_.loop.runUntil(nowNs() + 300 * kMs); // what it wrote last
}

int Squadron::run() {
    const Options& o = ctx_.opt;
    ctx_.runStart = nowNs();
    ctx_.trafficEnd = ctx_.runStart + ctx_.seconds(o.duration);
    ctx_.measureFrom = ctx_.runStart + ctx_.seconds(std::max(3.0, o.measureAfter));
    scheduleJoins();
    ctx_.loop.at(ctx_.runStart + 5 * kSec, [this] { scheduleChurn(); });
    if (o.rogues != "none")
        ctx_.loop.at(ctx_.runStart + ctx_.seconds(o.rogueEvery / 2), [this] { spawnRogue(); });
    if (o.simChurnS > 0 && !sims_.empty())
        ctx_.loop.after(ctx_.seconds(ctx_.uniform(0.5, 1.5) * o.simChurnS), [this] { churnLastSim(); });
    if (o.aiChurnS > 0 && ai_)
        ctx_.loop.after(ctx_.seconds(ctx_.uniform(0.5, 1.5) * o.aiChurnS), [this] { churnAiSpy(); });
    if (attack_) {
        attack_->prepare();
        ctx_.loop.at(ctx_.runStart + ctx_.seconds(o.attackStart), [this] { attack_->start(); });
        ctx_.loop.at(ctx_.trafficEnd, [this] { attack_->endTraffic(); });
    }
    ctx_.loop.at(ctx_.runStart + ctx_.seconds(o.attackStart), [this] { newcomers_.start(); });
    sample();
    ctx_.loop.after(ctx_.seconds(o.reportEvery), [this] { periodicReport(); });
    ctx_.loop.runUntil(ctx_.trafficEnd + ctx_.seconds(o.drain));
    if (probe_.enabled()) probe_.sample(secondsSinceStart());
    if (o.stopServer) stopServer();
    const int status = finalReport();
    if (attack_) attack_->stop();
    newcomers_.stop();
    for (auto& p : players_)
        p->stop();
    for (auto& a : awacs_)
        a->stop();
    for (auto& s : sims_)
        s->stop();
    if (ai_) ai_->stop();
    return status;
}
