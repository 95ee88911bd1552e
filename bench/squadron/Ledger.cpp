#include "Ledger.h"

#include <algorithm>

void LossTotals::add(const LossTotals& o) {
    owed += o.owed;
    received += o.received;
    missingSplit += o.missingSplit;
    missingOther += o.missingOther;
    dupReorder += o.dupReorder;
}

int Ledger::openStream(int64_t now) {
    streams_.push_back(Stream{now, kOpenEnd, {}, {}});
    return int(streams_.size() - 1);
}

uint32_t Ledger::recordSent(int stream, int64_t sentAt) {
    auto& s = streams_[size_t(stream)];
    s.sentAt.push_back(sentAt);
    return uint32_t(s.sentAt.size());
}

void Ledger::markSplit(int stream, uint32_t seq) {
    if (!hasStream(stream)) return;
    auto& splits = streams_[size_t(stream)].splits;
    if (splits.empty() || splits.back() < seq)
        splits.push_back(seq);
    else if (!std::binary_search(splits.begin(), splits.end(), seq))
        splits.insert(std::lower_bound(splits.begin(), splits.end(), seq), seq);
}

void Ledger::closeStream(int stream, int64_t now) {
    streams_[size_t(stream)].closedAt = now;
}

int Ledger::openReceiver(int64_t listedAt) {
    receivers_.push_back(Receiver{listedAt, kOpenEnd, {}, 0});
    return int(receivers_.size() - 1);
}

void Ledger::closeReceiver(int receiver, int64_t leftAt) {
    receivers_[size_t(receiver)].leftAt = leftAt;
}

void Ledger::recordReceived(int receiver, int stream, uint32_t seq) {
    auto& r = receivers_[size_t(receiver)];
    if (r.pairs.size() <= size_t(stream)) r.pairs.resize(size_t(stream) + 1);
    Pair& p = r.pairs[size_t(stream)];
    if (seq <= p.last) {
        ++r.dupReorder;
        return;
    }
    if (!p.runs.empty() && p.runs.back().last + 1 == seq)
        p.runs.back().last = seq;
    else
        p.runs.push_back(Run{seq, seq});
    p.last = seq;
}

uint64_t Ledger::receivedWithin(const Pair& p, uint32_t lo, uint32_t hi) {
    uint64_t n = 0;
    for (const Run& run : p.runs) {
        uint32_t a = std::max(run.first, lo), b = std::min(run.last, hi);
        if (a <= b) n += b - a + 1;
    }
    return n;
}

bool Ledger::wasReceived(const Pair& p, uint32_t seq) {
    auto it = std::upper_bound(p.runs.begin(), p.runs.end(), seq,
                               [](uint32_t v, const Run& r) { return v < r.first; });
    return it != p.runs.begin() && std::prev(it)->last >= seq;
}

LossTotals Ledger::totalsFor(int receiver, int64_t cutoff) const {
    static const Pair kNothing;
    const Receiver& r = receivers_[size_t(receiver)];
    LossTotals t;
    t.dupReorder = r.dupReorder;
    const int64_t from = r.listedAt + startMargin_;
    const int64_t to = std::min(r.leftAt == kOpenEnd ? kOpenEnd : r.leftAt - endMargin_, cutoff);
    for (size_t id = 0; id < streams_.size(); ++id) {
        const Stream& s = streams_[id];
        const int64_t lo_t = std::max(from, s.openedAt), hi_t = std::min(to, s.closedAt);
        if (hi_t < lo_t) continue;
        auto first = std::lower_bound(s.sentAt.begin(), s.sentAt.end(), lo_t);
        auto past = std::upper_bound(first, s.sentAt.end(), hi_t);
        if (first == past) continue;
        const uint32_t lo = uint32_t(first - s.sentAt.begin()) + 1, hi = uint32_t(past - s.sentAt.begin());
        const Pair& p = id < r.pairs.size() ? r.pairs[id] : kNothing;
        const uint64_t got = receivedWithin(p, lo, hi);
        uint64_t split = 0;
        for (auto it = std::lower_bound(s.splits.begin(), s.splits.end(), lo);
             it != s.splits.end() && *it <= hi; ++it)
            if (!wasReceived(p, *it)) ++split;
        const uint64_t owed = hi - lo + 1;
        t.owed += owed;
        t.received += got;
        t.missingSplit += split;
        t.missingOther += owed - got - split;
    }
    return t;
}

LossTotals Ledger::totals(int64_t cutoff) const {
    LossTotals t;
    for (size_t r = 0; r < receivers_.size(); ++r)
        t.add(totalsFor(int(r), cutoff));
    return t;
}
