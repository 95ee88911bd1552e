#pragma once
// Samples the server's resident memory, open descriptors and CPU time from /proc over the run.
#include <cstdint>
#include <string>
#include <vector>

class ServerProbe {
  public:
    struct Sample {
        double t;       // seconds since the run started
        uint64_t rssKb; // VmRSS
        int fds;
        double cpuS; // user + system time so far
    };
    explicit ServerProbe(int pid) : pid_(pid) {}
    bool enabled() const { return pid_ > 0; }
    // False once the process is gone.
    bool sample(double t);
    bool alive() const { return alive_; }
    // Whether the process still runs (not gone, not a zombie); records nothing.
    bool running() const;
    const std::vector<Sample>& samples() const { return samples_; }
    uint64_t hwmKb() const { return hwmKb_; }

    struct Summary {
        Sample start{}, warm{}, peak{}, end{};
        int fdsPeak = 0;
        double cpuPeakShare = 0; // the highest CPU share over one sampling interval (1 = one core)
    };
    // warm: the first sample at or after warmAt seconds (memory "after warm-up").
    Summary summary(double warmAt) const;

  private:
    int pid_;
    bool alive_ = true;
    uint64_t hwmKb_ = 0;
    std::vector<Sample> samples_;
};
