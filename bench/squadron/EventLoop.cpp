#include "EventLoop.h"

#include "Timing.h"

#include <sys/epoll.h>
#include <unistd.h>

#include <stdexcept>

EventLoop::EventLoop() : epoll_(epoll_create1(EPOLL_CLOEXEC)) {
    if (epoll_ < 0) throw std::runtime_error("epoll_create1 failed");
}

EventLoop::~EventLoop() {
    close(epoll_);
}

void EventLoop::watch(int fd, uint32_t events, FdHandler* handler) {
    epoll_event ev{};
    ev.events = events;
    ev.data.ptr = handler;
    epoll_ctl(epoll_, EPOLL_CTL_ADD, fd, &ev);
}

void EventLoop::change(int fd, uint32_t events, FdHandler* handler) {
    epoll_event ev{};
    ev.events = events;
    ev.data.ptr = handler;
    epoll_ctl(epoll_, EPOLL_CTL_MOD, fd, &ev);
}

void EventLoop::forget(int fd) {
    epoll_ctl(epoll_, EPOLL_CTL_DEL, fd, nullptr);
}

void EventLoop::at(int64_t when, std::function<void()> fn) {
    timers_.push(Timer{when, nextOrder_++, std::move(fn)});
}

void EventLoop::after(int64_t delayNs, std::function<void()> fn) {
    at(nowNs() + delayNs, std::move(fn));
}

void EventLoop::runUntil(int64_t deadline) {
    stopped_ = false;
    epoll_event events[128];
    while (!stopped_) {
        int64_t now = nowNs();
        while (!timers_.empty() && timers_.top().when <= now && !stopped_) {
            auto fn = std::move(const_cast<Timer&>(timers_.top()).fn);
            timers_.pop();
            fn();
        }
        if (stopped_ || now >= deadline) break;
        int64_t next = deadline;
        if (!timers_.empty()) next = std::min(next, timers_.top().when);
        int waitMs = int(std::max<int64_t>(0, (next - nowNs() + kMs - 1) / kMs));
        int n = epoll_wait(epoll_, events, 128, waitMs);
        for (int i = 0; i < n; ++i)
            static_cast<FdHandler*>(events[i].data.ptr)->onEvents(events[i].events);
    }
}
