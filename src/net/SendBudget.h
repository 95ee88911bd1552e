#pragma once
// What one connection's messages may make the server send to the other peers, in bytes: a bucket
// that refills at the operator's rate and holds a second's worth. A roster broadcast (a name to
// every player, an announcement to every AWACS client) is paid by the connection whose message
// caused it, once per receiver; when the bucket is overdrawn the connection's further messages
// wait until it has refilled. Relays of positions are not paid for: they are what the server
// is for, and their output follows their input.
#include <QtGlobal>

#include <algorithm>
#include <chrono>

class SendBudget {
  public:
    using Clock = std::chrono::steady_clock;

    // Full, at the given rate (bytes a second).
    void reset(qint64 rate) {
        rate_ = std::max<qint64>(rate, 1);
        bytes_ = rate_;
        refilled_ = Clock::now();
    }
    void spend(qint64 bytes, qint64 rate) {
        refill(rate);
        bytes_ -= bytes;
    }
    // Whether further messages must wait; cheap while the bucket is not overdrawn.
    bool overdrawn() {
        if (bytes_ >= 0) return false;
        refill(rate_);
        return bytes_ < 0;
    }
    // How long until the bucket is out of debt.
    qint64 msUntilPaid() const { return bytes_ >= 0 ? 0 : (-bytes_ * 1000 + rate_ - 1) / rate_; }

  private:
    void refill(qint64 rate) {
        rate_ = std::max<qint64>(rate, 1);
        const Clock::time_point now = Clock::now();
        // A second refills the bucket: longer idle times add nothing (and cannot overflow).
        const qint64 us = std::min<qint64>(
            std::chrono::duration_cast<std::chrono::microseconds>(now - refilled_).count(), 1000000);
        const qint64 earned = us * rate_ / 1000000;
        if (earned <= 0) return;
        bytes_ = std::min(rate_, bytes_ + earned);
        refilled_ = now;
    }
    qint64 rate_ = 1;
    qint64 bytes_ = 0;
    Clock::time_point refilled_ = Clock::now();
};
