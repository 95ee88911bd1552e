// The squadron's final account: traffic per command, what every well-behaved peer was owed
// against what it got, latency, the server's memory and descriptors, and one JSON line.
#include "Squadron.h"

#include <cstdio>
#include <string>

namespace {

using ull = unsigned long long;

std::string tallyLine(const std::map<std::string, uint64_t, std::less<>>& m) {
    std::string s;
    for (const auto& [command, n] : m) {
        if (!s.empty()) s += ' ';
        std::string printable;
        for (char c : command)
            printable += (c >= 32 && c < 127 && c != '"' && c != '\\') ? c : '?';
        s += printable + "=" + std::to_string(n);
    }
    return s;
}

std::string tallyJson(const std::map<std::string, uint64_t, std::less<>>& m) {
    std::string s = "{";
    for (const auto& [command, n] : m) {
        std::string key;
        for (char c : command)
            key += (c >= 32 && c < 127 && c != '"' && c != '\\') ? c : '?';
        if (s.size() > 1) s += ',';
        s += "\"" + key + "\":" + std::to_string(n);
    }
    return s + "}";
}

std::string bytesText(uint64_t bytes) {
    char s[32];
    if (bytes < 1000000)
        std::snprintf(s, sizeof s, "%.1f kB", double(bytes) / 1e3);
    else
        std::snprintf(s, sizeof s, "%.1f MB", double(bytes) / 1e6);
    return s;
}

} // namespace

int Squadron::finalReport() {
    const Options& o = ctx_.opt;
    const int64_t cutoff = ctx_.trafficEnd;
    const LossTotals loss = ctx_.ledger.totals(cutoff);
    const Anomalies& an = ctx_.anomalies;
    PlayerPeer::Counts replies;
    int stray = 0;
    for (auto& p : players_) {
        const auto& c = p->counts();
        replies.ok += c.ok;
        replies.bad += c.bad;
        replies.timedOut += c.timedOut;
        replies.excused += c.excused;
        stray += p->stray();
    }
    const double window = double(ctx_.trafficEnd - ctx_.measureFrom) / 1e9;
    const double indataRate = window > 0 ? double(ctx_.indataInWindow) / window : 0;
    const auto server = probe_.summary(o.warmUp >= 0 ? o.warmUp : std::min(150.0, o.duration / 2));

    std::printf("\n== squadron: %.0f s, %d players, %d AWACS clients (+%d stalled), %d simulators, AI Spy "
                "%s, rogues %s\n",
                o.duration, o.players, o.awacs, o.stalled, o.sims, ai_ ? "on" : "off", o.rogues.c_str());
    std::printf("sent by the peers:   %s\n", tallyLine(ctx_.tally.sentByCommand()).c_str());
    std::printf("received by them:    %s\n", tallyLine(ctx_.tally.receivedByCommand()).c_str());
    std::printf("relayed positions and AI updates, over every AWACS connection:\n"
                "  owed %llu  received %llu  missing %llu (split/merged server reads %llu, other %llu)  "
                "dup/reorder %llu\n",
                (ull)loss.owed, (ull)loss.received, (ull)loss.missing(), (ull)loss.missingSplit,
                (ull)loss.missingOther, (ull)loss.dupReorder);
    std::printf(
        "anomalies: corrupt %llu  unknown-stream %llu  unannounced %llu  wrong-number %llu  ai-merged %llu  "
        "unexpected-close %llu  connect-failed %llu\n",
        (ull)an.corrupt, (ull)an.unknownStream, (ull)an.unannounced, (ull)an.wrongNumber, (ull)an.aiMerged,
        (ull)an.unexpectedClose, (ull)an.connectFailed);
    std::printf("player replies: ok %llu  wrong %llu  missing %llu  excused (request split) %llu  stray %d\n",
                (ull)replies.ok, (ull)replies.bad, (ull)replies.timedOut, (ull)replies.excused, stray);
    std::printf("INDATA latency: p50 %.0f us  p99 %.0f us  p99.9 %.0f us  max %.0f us  (%llu samples); "
                "delivered %.0f INDATA/s\n",
                ctx_.latency.percentile(0.5) / 1e3, ctx_.latency.percentile(0.99) / 1e3,
                ctx_.latency.percentile(0.999) / 1e3, double(ctx_.latency.max()) / 1e3,
                (ull)ctx_.latency.count(), indataRate);
    std::printf("AILOCA latency: p50 %.0f us  p99 %.0f us\n", ctx_.aiLatency.percentile(0.5) / 1e3,
                ctx_.aiLatency.percentile(0.99) / 1e3);
    std::printf("churn: %llu left, %llu came back; rogues:", (ull)ctx_.churned, (ull)ctx_.rejoined);
    for (const auto& [k, n] : rogueCounts_)
        std::printf(" %s=%d", k.c_str(), n);
    std::printf("\n");
    if (probe_.enabled())
        std::printf("server: rss start %.1f MiB, after warm-up (%.0f s) %.1f MiB, peak %.1f MiB at %.0f s, "
                    "end %.1f MiB "
                    "(VmHWM %.1f MiB); fds start %d peak %d end %d; %s\n",
                    double(server.start.rssKb) / 1024, server.warm.t, double(server.warm.rssKb) / 1024,
                    double(server.peak.rssKb) / 1024, server.peak.t, double(server.end.rssKb) / 1024,
                    double(probe_.hwmKb()) / 1024, server.start.fds, server.fdsPeak, server.end.fds,
                    probe_.alive() ? "alive" : "GONE");

    if (probe_.enabled())
        std::printf("server CPU: %.2f s over the run, at most %.0f %% of a core over one sample\n",
                    server.end.cpuS - server.start.cpuS, 100 * server.cpuPeakShare);
    std::printf("injected into well-behaved peers' streams: %llu; AILOCA from a hostile AI Spy: %llu\n",
                (ull)an.injected, (ull)ctx_.hostileAiloca);
    if (attack_) {
        const AttackFigures& f = attack_->figures();
        std::printf(
            "hostile peer %s: connections %llu (at most %llu open, %llu closed by the server), writes %llu "
            "(%llu held back), %s, %llu commands",
            o.attack.c_str(), (ull)f.connections, (ull)f.peakOpen, (ull)f.closedByServer, (ull)f.writes,
            (ull)f.heldBack, bytesText(f.bytes).c_str(), (ull)f.messages);
        if (o.attack == "bigread")
            std::printf("; replies whole %llu, cut %llu, unfinished %llu", (ull)f.roundsWhole,
                        (ull)f.roundsCut, (ull)f.roundsOpen);
        std::printf("\n");
    }
    if (newcomers_.tried() > 0)
        std::printf(
            "newcomers: %llu of %llu AWACS clients got their picture within 3 s (p50 %.1f ms, max %.1f ms)\n",
            (ull)newcomers_.joined(), (ull)newcomers_.tried(), newcomers_.joinTime().percentile(0.5) / 1e6,
            double(newcomers_.joinTime().max()) / 1e6);
    if (o.stopServer && !stopSent_) {
        std::printf("SIGTERM at the end: not sent, the server was gone\n");
    } else if (o.stopServer) {
        if (shutdownS_ >= 0)
            std::printf(
                "SIGTERM at the end: gone after %.2f s; DISCON/CLOSE1 received by %llu of %llu peers\n",
                shutdownS_, (ull)ctx_.shutdownNotices, (ull)noticesOwed_);
        else
            std::printf(
                "SIGTERM at the end: still running after %.0f s; DISCON/CLOSE1 received by %llu of %llu "
                "peers\n",
                o.stopWait, (ull)ctx_.shutdownNotices, (ull)noticesOwed_);
    }
    std::printf("per peer:\n");
    for (auto& a : awacs_) {
        if (a->stalled()) {
            std::printf("  awacs %2d (stalled): not counted\n", a->index() + 1);
            continue;
        }
        const LossTotals t = lossesFor(*a, cutoff);
        std::printf("  awacs %2d: sessions %llu  INDATA %llu  AILOCA %llu  owed %llu  got %llu  missing %llu "
                    "(split %llu)  "
                    "SYNCRO %llu\n",
                    a->index() + 1, (ull)a->sessions(), (ull)a->indata(), (ull)a->ailoca(), (ull)t.owed,
                    (ull)t.received, (ull)t.missing(), (ull)t.missingSplit, (ull)a->syncro());
    }
    for (auto& p : players_) {
        const auto& c = p->counts();
        std::printf("  %-8s: sessions %llu  F4LOCA %llu  replies ok %llu wrong %llu missing %llu excused "
                    "%llu  SYNCRO %llu\n",
                    p->name().c_str(), (ull)c.sessions, (ull)c.f4loca, (ull)c.ok, (ull)c.bad, (ull)c.timedOut,
                    (ull)c.excused, (ull)c.syncro);
    }
    for (auto& s : sims_)
        std::printf("  %-8s: sessions %llu  SIMLOC %llu  SYNCRO %llu\n", s->name().c_str(),
                    (ull)s->sessions(), (ull)s->simloc(), (ull)s->syncro());
    if (ai_)
        std::printf("  AI Spy  : sessions %llu  AIUPDT %llu  SYNCRO %llu\n", (ull)ai_->sessions(),
                    (ull)ai_->updates(), (ull)ai_->syncro());

    const bool newcomersIn = newcomers_.joined() == newcomers_.tried();
    const bool stoppedWell =
        !o.stopServer || (stopSent_ && shutdownS_ >= 0 && ctx_.shutdownNotices == noticesOwed_);
    const bool clean = loss.missingOther == 0 && loss.dupReorder == 0 && an.corrupt == 0 &&
                       an.unknownStream == 0 && an.unannounced == 0 && an.wrongNumber == 0 &&
                       an.unexpectedClose == 0 && an.connectFailed == 0 && an.injected == 0 &&
                       replies.bad == 0 && replies.timedOut == 0 && (!probe_.enabled() || probe_.alive()) &&
                       stoppedWell && newcomersIn;
    std::printf(
        "{\"tool\":\"squadron\",\"duration_s\":%.0f,\"players\":%d,\"awacs\":%d,\"stalled\":%d,\"sims\":%d,"
        "\"ai\":%s,"
        "\"rogues\":\"%s\",\"sent\":%s,\"received\":%s,\"owed\":%llu,\"owed_received\":%llu,\"missing_"
        "split\":%llu,"
        "\"missing_other\":%llu,\"dup_reorder\":%llu,\"corrupt\":%llu,\"unknown_stream\":%llu,"
        "\"unannounced\":%llu,"
        "\"wrong_number\":%llu,\"ai_merged\":%llu,\"unexpected_close\":%llu,\"connect_failed\":%llu,"
        "\"replies_ok\":%llu,\"replies_wrong\":%llu,\"replies_missing\":%llu,\"replies_excused\":%llu,"
        "\"indata_p50_us\":%.0f,\"indata_p99_us\":%.0f,\"indata_p999_us\":%.0f,\"indata_max_us\":%.0f,"
        "\"indata_per_s\":%.0f,\"ailoca_p99_us\":%.0f,\"churned\":%llu,\"server_probed\":%s,\"server_alive\":"
        "%s,"
        "\"rss_start_kb\":%llu,\"rss_warm_kb\":%llu,\"rss_peak_kb\":%llu,\"rss_end_kb\":%llu,\"vmhwm_kb\":%"
        "llu,"
        "\"fds_start\":%d,\"fds_peak\":%d,\"fds_end\":%d,",
        o.duration, o.players, o.awacs, o.stalled, o.sims, ai_ ? "true" : "false", o.rogues.c_str(),
        tallyJson(ctx_.tally.sentByCommand()).c_str(), tallyJson(ctx_.tally.receivedByCommand()).c_str(),
        (ull)loss.owed, (ull)loss.received, (ull)loss.missingSplit, (ull)loss.missingOther,
        (ull)loss.dupReorder, (ull)an.corrupt, (ull)an.unknownStream, (ull)an.unannounced,
        (ull)an.wrongNumber, (ull)an.aiMerged, (ull)an.unexpectedClose, (ull)an.connectFailed,
        (ull)replies.ok, (ull)replies.bad, (ull)replies.timedOut, (ull)replies.excused,
        ctx_.latency.percentile(0.5) / 1e3, ctx_.latency.percentile(0.99) / 1e3,
        ctx_.latency.percentile(0.999) / 1e3, double(ctx_.latency.max()) / 1e3, indataRate,
        ctx_.aiLatency.percentile(0.99) / 1e3, (ull)ctx_.churned, probe_.enabled() ? "true" : "false",
        probe_.alive() ? "true" : "false", (ull)server.start.rssKb, (ull)server.warm.rssKb,
        (ull)server.peak.rssKb, (ull)server.end.rssKb, (ull)probe_.hwmKb(), server.start.fds, server.fdsPeak,
        server.end.fds);
    const AttackFigures af = attack_ ? attack_->figures() : AttackFigures{};
    std::printf(
        "\"attack\":\"%s\",\"attack_connections\":%llu,\"attack_closed_by_server\":%llu,"
        "\"attack_writes\":%llu,\"attack_held_back\":%llu,\"attack_bytes\":%llu,\"attack_messages\":%llu,"
        "\"attack_peak_open\":%llu,\"rounds_whole\":%llu,\"rounds_cut\":%llu,\"rounds_open\":%llu,"
        "\"injected\":%llu,\"hostile_ailoca\":%llu,\"indata_received\":%llu,\"server_cpu_s\":%.2f,"
        "\"server_cpu_peak\":%.2f,\"stop_asked\":%s,\"shutdown_s\":%.2f,\"notices_owed\":%llu,"
        "\"notices_got\":%llu,\"newcomers_tried\":%llu,\"newcomers_joined\":%llu,\"newcomer_join_max_ms\":%."
        "1f,"
        "\"clean\":%s}\n",
        o.attack.c_str(), (ull)af.connections, (ull)af.closedByServer, (ull)af.writes, (ull)af.heldBack,
        (ull)af.bytes, (ull)af.messages, (ull)af.peakOpen, (ull)af.roundsWhole, (ull)af.roundsCut,
        (ull)af.roundsOpen, (ull)an.injected, (ull)ctx_.hostileAiloca, (ull)ctx_.tally.receivedOf("INDATA"),
        server.end.cpuS - server.start.cpuS, server.cpuPeakShare, stopSent_ ? "true" : "false", shutdownS_,
        (ull)noticesOwed_, (ull)ctx_.shutdownNotices, (ull)newcomers_.tried(), (ull)newcomers_.joined(),
        double(newcomers_.joinTime().max()) / 1e6, clean ? "true" : "false");
    std::fflush(stdout);
    return clean ? 0 : 1;
}
