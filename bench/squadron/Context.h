#pragma once
// What every simulated peer shares: the options, the loop, the ledger of numbered streams,
// the message tallies and the counters of things that should never happen.
#include "EventLoop.h"
#include "Ledger.h"
#include "Options.h"
#include "Timing.h"

#include <netinet/in.h>

#include <cstdint>
#include <map>
#include <random>
#include <string>
#include <string_view>
#include <vector>

// Messages per command name, in each direction.
class Tally {
  public:
    void sent(std::string_view command) { bump(sent_, command); }
    void received(std::string_view command) { bump(received_, command); }
    const std::map<std::string, uint64_t, std::less<>>& sentByCommand() const { return sent_; }
    const std::map<std::string, uint64_t, std::less<>>& receivedByCommand() const { return received_; }
    uint64_t receivedOf(std::string_view command) const {
        auto it = received_.find(command);
        return it == received_.end() ? 0 : it->second;
    }

  private:
    static void bump(std::map<std::string, uint64_t, std::less<>>& m, std::string_view command) {
        command = command.substr(0, 6);
        auto it = m.find(command);
        if (it == m.end()) it = m.emplace(std::string(command), 0).first;
        ++it->second;
    }
    std::map<std::string, uint64_t, std::less<>> sent_, received_;
};

// Faults seen by the well-behaved peers; all but the split/merge counts should stay 0.
struct Anomalies {
    uint64_t corrupt = 0;         // an INDATA or AILOCA that does not parse as ours
    uint64_t unknownStream = 0;   // a stamp naming no stream of this run
    uint64_t unannounced = 0;     // INDATA for a number that had no NEWCLT
    uint64_t wrongNumber = 0;     // INDATA whose number is announced for someone else
    uint64_t aiMerged = 0;        // two AI Spy updates read together (dropped by design)
    uint64_t unexpectedClose = 0; // the server closed a well-behaved peer
    uint64_t connectFailed = 0;
    uint64_t injected = 0; // a message the server never sends there, or DISCON/CLOSE1 before shutdown
};

enum class Port { Player, Awacs, Sim, Ai };

struct StreamOwner {
    char kind;        // 'P' player, 'S' simulator airplane, 'A' AI Spy
    std::string name; // the player's or simulator's name as announced
};

struct Context {
    explicit Context(const Options& o);

    Options opt;
    EventLoop loop;
    Ledger ledger;
    Tally tally;
    Anomalies anomalies;
    std::mt19937_64 rng;
    sockaddr_in playerAddr{}, awacsAddr{}, simAddr{}, aiAddr{};
    in_addr attackSource{}; // where the hostile peer connects from
    int64_t runStart = 0, trafficEnd = Ledger::kOpenEnd, measureFrom = 0;
    std::vector<StreamOwner> owners; // by stream id
    Histogram latency;               // INDATA, reading AWACS clients only
    Histogram recentLatency;         // the same since the last periodic report
    Histogram aiLatency;             // AILOCA
    uint64_t indataOwnedByRun = 0;   // INDATA received that carried a stamp of this run
    uint64_t indataInWindow = 0;     // of those, received between measureFrom and trafficEnd
    uint64_t churned = 0, rejoined = 0;
    uint64_t hostileAiloca = 0;   // AILOCA converted from a hostile AI Spy's records (not ours)
    bool stopping = false;        // the server was asked to shut down
    uint64_t shutdownNotices = 0; // DISCON (CLOSE1 for the AI Spy) received after that

    bool sending() const { return nowNs() < trafficEnd; }
    const sockaddr_in& address(Port port) const;
    // Whether the server ever sends this command on that port during a run.
    static bool serverSends(Port port, std::string_view command);
    // Every message a well-behaved peer receives passes here: anything the server never sends
    // there, and a DISCON or CLOSE1 before shutdown, was injected into the stream.
    void screen(Port port, std::string_view command);
    double uniform(double a, double b) { return std::uniform_real_distribution<double>(a, b)(rng); }
    int pick(int n) { return int(std::uniform_int_distribution<int>(0, n - 1)(rng)); }
    int64_t seconds(double s) const { return int64_t(s * 1e9); }

    int openStream(char kind, const std::string& owner);
    // The position text of one numbered message: kind, stream, number, send time, padding
    // up to --payload bytes. It holds no "@": a SIMLOC keeps only what lies before a second one.
    std::string stamp(int stream, uint32_t seq, int64_t sentAt) const;

    struct Stamp {
        char kind;
        int stream;
        uint32_t seq;
        int64_t sentAt;
    };
    // Parses a stamp back; false for anything this run did not write.
    static bool parseStamp(std::string_view text, Stamp& out);
};
