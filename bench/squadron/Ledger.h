#pragma once
// What each receiver was owed and what it got, per numbered stream.
//
// A stream is one sender's run of numbered messages (a player's F4LOCA of one connection, an
// airplane's SIMLOC between ADDAIR and DELAIR, the AI Spy's updates of one connection); a
// receiver is one AWACS connection. A message is owed to a receiver when it was sent while
// the receiver was listed, with a margin at both ends because the server sees the two
// connections' events in its own order. A message whose bytes left the sender in two writes
// may be split across two server reads, which drops it by design: such losses are counted
// apart from the others, which should stay at zero.
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

struct LossTotals {
    uint64_t owed = 0;         // messages the receivers should have got
    uint64_t received = 0;     // of those, how many they got
    uint64_t missingSplit = 0; // missing, but their bytes went out in two writes
    uint64_t missingOther = 0; // missing without excuse
    uint64_t dupReorder = 0;   // a number seen again or out of order (never expected)

    uint64_t missing() const { return missingSplit + missingOther; }
    void add(const LossTotals& o);
};

class Ledger {
  public:
    static constexpr int64_t kOpenEnd = std::numeric_limits<int64_t>::max();

    Ledger(int64_t startMarginNs, int64_t endMarginNs)
        : startMargin_(startMarginNs), endMargin_(endMarginNs) {}

    int openStream(int64_t now);
    // Numbers the next message of the stream (from 1) and remembers when it was sent.
    uint32_t recordSent(int stream, int64_t sentAt);
    void markSplit(int stream, uint32_t seq);
    void closeStream(int stream, int64_t now);
    bool hasStream(int stream) const { return stream >= 0 && size_t(stream) < streams_.size(); }
    size_t streamCount() const { return streams_.size(); }
    uint32_t lastSeq(int stream) const { return uint32_t(streams_[size_t(stream)].sentAt.size()); }

    int openReceiver(int64_t listedAt);
    void closeReceiver(int receiver, int64_t leftAt);
    void recordReceived(int receiver, int stream, uint32_t seq);

    // Owed messages are those sent no later than cutoff (the senders' stop, or "now" minus a
    // grace for a report in the middle of the run).
    LossTotals totalsFor(int receiver, int64_t cutoff) const;
    LossTotals totals(int64_t cutoff) const;

  private:
    struct Run {
        uint32_t first, last;
    };
    struct Pair {
        std::vector<Run> runs;
        uint32_t last = 0;
    };
    struct Stream {
        int64_t openedAt = 0, closedAt = kOpenEnd;
        std::vector<int64_t> sentAt; // index seq - 1
        std::vector<uint32_t> splits;
    };
    struct Receiver {
        int64_t listedAt = 0, leftAt = kOpenEnd;
        std::vector<Pair> pairs; // by stream
        uint64_t dupReorder = 0;
    };
    static uint64_t receivedWithin(const Pair& p, uint32_t lo, uint32_t hi);
    static bool wasReceived(const Pair& p, uint32_t seq);

    int64_t startMargin_, endMargin_;
    std::vector<Stream> streams_;
    std::vector<Receiver> receivers_;
};
