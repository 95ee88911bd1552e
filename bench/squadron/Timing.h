#pragma once
// Clock and latency histogram shared by every peer of the simulator.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <ctime>
#include <vector>

inline int64_t nowNs() {
    timespec ts;
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return int64_t(ts.tv_sec) * 1000000000LL + ts.tv_nsec;
}

constexpr int64_t kMs = 1000000LL;
constexpr int64_t kSec = 1000000000LL;

// Latencies in nanoseconds: exact below 256, then 64 linear buckets per power of two
// (relative error under 1.6 %), which is plenty for p50/p99 of a loopback relay.
class Histogram {
  public:
    void add(int64_t v) {
        uint64_t u = v > 0 ? uint64_t(v) : 0;
        ++buckets_[index(u)];
        ++count_;
        sum_ += double(u);
        max_ = std::max(max_, u);
    }
    uint64_t count() const { return count_; }
    double mean() const { return count_ ? sum_ / double(count_) : 0; }
    uint64_t max() const { return max_; }
    double percentile(double q) const {
        if (!count_) return 0;
        uint64_t rank = std::max<uint64_t>(1, uint64_t(std::ceil(q * double(count_))));
        uint64_t seen = 0;
        for (size_t i = 0; i < buckets_.size(); ++i) {
            seen += buckets_[i];
            if (seen >= rank) return std::min(middle(i), double(max_));
        }
        return double(max_);
    }
    void merge(const Histogram& o) {
        for (size_t i = 0; i < buckets_.size(); ++i)
            buckets_[i] += o.buckets_[i];
        count_ += o.count_;
        sum_ += o.sum_;
        max_ = std::max(max_, o.max_);
    }

  private:
    static constexpr int kSub = 64;
    static size_t index(uint64_t v) {
        if (v < 256) return size_t(v);
        int msb = 63 - __builtin_clzll(v);
        int shift = msb - 6;
        return 256 + size_t(shift - 2) * kSub + size_t((v >> shift) - kSub);
    }
    static double middle(size_t i) {
        if (i < 256) return double(i);
        size_t k = i - 256;
        int shift = int(k / kSub) + 2;
        uint64_t m = uint64_t(k % kSub + kSub);
        return double(m << shift) + double(uint64_t(1) << shift) / 2.0;
    }
    std::vector<uint64_t> buckets_ = std::vector<uint64_t>(256 + 60 * kSub, 0);
    uint64_t count_ = 0, max_ = 0;
    double sum_ = 0;
};
