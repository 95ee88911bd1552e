#pragma once
// Newcomers: every --newcomer-every seconds of the traffic a fresh AWACS client registers and
// must get the first message of its picture within 3 s; then it leaves. It tells whether anyone
// could still join while the others were busy (a server at its descriptor limit, or frozen,
// lets nobody in).
#include "Conn.h"
#include "Context.h"
#include "Timing.h"

#include <memory>

class NewcomerProbe {
  public:
    explicit NewcomerProbe(Context& ctx) : ctx_(ctx) {}
    void start();
    void stop();
    uint64_t tried() const { return tried_; }
    uint64_t joined() const { return joined_; }
    const Histogram& joinTime() const { return joinTime_; }

  private:
    void next();
    void settle(bool joined);

    Context& ctx_;
    std::unique_ptr<Conn> conn_;
    int64_t openedAt_ = 0;
    uint64_t attempt_ = 0, tried_ = 0, joined_ = 0;
    Histogram joinTime_;
};
