#pragma once
// One thread, one epoll set, one timer queue: every peer of the squadron runs on it, so
// no peer state needs a lock and timings come from one clock.
#include <cstdint>
#include <functional>
#include <queue>
#include <vector>

class FdHandler {
  public:
    virtual void onEvents(uint32_t events) = 0;

  protected:
    ~FdHandler() = default;
};

class EventLoop {
  public:
    EventLoop();
    ~EventLoop();
    EventLoop(const EventLoop&) = delete;
    EventLoop& operator=(const EventLoop&) = delete;

    void watch(int fd, uint32_t events, FdHandler* handler);
    void change(int fd, uint32_t events, FdHandler* handler);
    void forget(int fd);

    void at(int64_t when, std::function<void()> fn);
    void after(int64_t delayNs, std::function<void()> fn);
    // Runs events and timers until the deadline or stop().
    void runUntil(int64_t deadline);
    void stop() { stopped_ = true; }

  private:
    struct Timer {
        int64_t when;
        uint64_t order;
        std::function<void()> fn;
        bool operator>(const Timer& o) const { return when != o.when ? when > o.when : order > o.order; }
    };
    int epoll_;
    bool stopped_ = false;
    uint64_t nextOrder_ = 0;
    std::priority_queue<Timer, std::vector<Timer>, std::greater<Timer>> timers_;
};
