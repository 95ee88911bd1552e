#include "net/EventDispatcher.h"

#include <QtGlobal>

#if !defined(Q_OS_LINUX)

QAbstractEventDispatcher* createEventDispatcher() {
    return nullptr;
}

#else

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QSocketNotifier>
#include <QTimerEvent>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <optional>
#include <thread>
#include <unordered_map>
#include <vector>

#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

// One turn of the loop: the events posted so far, one wait for the sockets that are ready or the
// next timer, then those sockets' notifiers, then the timers that are due.
class EpollDispatcher final : public QAbstractEventDispatcher {
  public:
    EpollDispatcher();
    ~EpollDispatcher() override;

    bool processEvents(QEventLoop::ProcessEventsFlags flags) override;
    void registerSocketNotifier(QSocketNotifier* notifier) override;
    void unregisterSocketNotifier(QSocketNotifier* notifier) override;
    void registerTimer(int id, qint64 interval, Qt::TimerType type, QObject* object) override;
    bool unregisterTimer(int id) override;
    bool unregisterTimers(QObject* object) override;
    QList<TimerInfo> registeredTimers(QObject* object) const override;
    int remainingTime(int id) override;
    void wakeUp() override;
    void interrupt() override;

  private:
    // The enabled notifiers of one descriptor, by QSocketNotifier::Type. A descriptor closed and
    // opened again under its number within one wait is watched anew under a generation of its
    // own; an event of that wait carries the old one and reaches nobody.
    struct Watch {
        QSocketNotifier* notifiers[3] = {};
        bool added = false;
        uint32_t generation = 0;
    };
    struct Timer {
        int id;
        qint64 interval;
        Qt::TimerType type;
        QObject* object;
        Clock::time_point due;
        bool firing;
    };
    void rewatch(int fd);
    int waitMs(QEventLoop::ProcessEventsFlags flags) const;
    bool activate(int fd, uint32_t generation, QSocketNotifier::Type type);
    bool fireTimers();
    // Never 0, which the wake-up descriptor's events carry.
    uint32_t nextGeneration() {
        if (++generations_ == 0) ++generations_;
        return generations_;
    }
    std::vector<Timer>::iterator findTimer(int id) {
        return std::find_if(timers_.begin(), timers_.end(), [id](const Timer& t) { return t.id == id; });
    }

    int epoll_ = -1;
    int wake_ = -1; // an eventfd another thread writes to end the wait
    std::thread::id owner_ = std::this_thread::get_id();
    std::unordered_map<int, Watch> watches_;
    uint32_t generations_ = 0;
    std::vector<Timer> timers_;
    std::atomic<bool> woken_{false}; // something was posted since the turn began
    std::atomic<bool> wakeArmed_{false};
    std::atomic<bool> interrupted_{false};
};

EpollDispatcher::EpollDispatcher() {
    epoll_ = epoll_create1(EPOLL_CLOEXEC);
    wake_ = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.u64 = static_cast<uint32_t>(wake_); // generation 0: no watch has it
    epoll_ctl(epoll_, EPOLL_CTL_ADD, wake_, &event);
}

EpollDispatcher::~EpollDispatcher() {
    ::close(wake_);
    ::close(epoll_);
}

bool EpollDispatcher::processEvents(QEventLoop::ProcessEventsFlags flags) {
    interrupted_.store(false);
    woken_.store(false);
    emit awake();
    QCoreApplication::sendPostedEvents();
    if (interrupted_.load()) return false;

    const int wait = waitMs(flags);
    if (wait != 0) emit aboutToBlock();
    epoll_event ready[256];
    int count = epoll_wait(epoll_, ready, static_cast<int>(std::size(ready)), wait);
    if (count < 0) count = 0; // a signal (EINTR): its handler's own notifier reports it
    if (wait != 0) emit awake();

    bool handled = false;
    for (int i = 0; i < count; ++i) {
        const int fd = static_cast<int>(static_cast<uint32_t>(ready[i].data.u64));
        const auto generation = static_cast<uint32_t>(ready[i].data.u64 >> 32);
        const uint32_t what = ready[i].events;
        if (fd == wake_) {
            eventfd_t value;
            eventfd_read(wake_, &value);
            wakeArmed_.store(false);
            continue;
        }
        if (flags & QEventLoop::ExcludeSocketNotifiers) continue; // still ready on the next wait
        // A notifier may remove or replace another while it is served: each is looked up anew.
        // A hang-up also goes to the write notifier, so that a socket reading nothing any more
        // learns of it instead of being reported again and again.
        if (what & (EPOLLIN | EPOLLHUP | EPOLLERR))
            handled = activate(fd, generation, QSocketNotifier::Read) || handled;
        if (what & (EPOLLOUT | EPOLLHUP | EPOLLERR))
            handled = activate(fd, generation, QSocketNotifier::Write) || handled;
        if (what & EPOLLPRI) handled = activate(fd, generation, QSocketNotifier::Exception) || handled;
    }
    if (!(flags & QEventLoop::X11ExcludeTimers)) handled = fireTimers() || handled;
    return handled;
}

bool EpollDispatcher::activate(int fd, uint32_t generation, QSocketNotifier::Type type) {
    const auto found = watches_.find(fd);
    if (found == watches_.end() || found->second.generation != generation || !found->second.notifiers[type])
        return false;
    QEvent event(QEvent::SockAct);
    QCoreApplication::sendEvent(found->second.notifiers[type], &event);
    return true;
}

// How long the wait may last: not at all when asked not to wait or when something was posted,
// otherwise until the next timer is due (rounded up, so it is due when the wait ends).
int EpollDispatcher::waitMs(QEventLoop::ProcessEventsFlags flags) const {
    if (!(flags & QEventLoop::WaitForMoreEvents) || woken_.load() || interrupted_.load()) return 0;
    const auto now = Clock::now();
    std::optional<Clock::duration> next;
    for (const Timer& timer : timers_) {
        if (timer.firing) continue;
        const Clock::duration left = std::max(timer.due - now, Clock::duration::zero());
        if (!next || left < *next) next = left;
    }
    if (!next) return -1;
    const auto ms = std::chrono::ceil<std::chrono::milliseconds>(*next).count();
    return static_cast<int>(std::min<decltype(ms)>(ms, 24 * 3600 * 1000));
}

bool EpollDispatcher::fireTimers() {
    const auto now = Clock::now();
    // A timer event may start and stop timers: the due ones are noted first, and each is looked
    // up again before it fires. A timer whose event is still running (a nested loop) waits.
    std::vector<int> due;
    for (const Timer& timer : timers_)
        if (!timer.firing && timer.due <= now) due.push_back(timer.id);
    for (int id : due) {
        auto timer = findTimer(id);
        if (timer == timers_.end() || timer->firing) continue;
        const auto interval = std::chrono::milliseconds(timer->interval);
        timer->due += interval;
        if (timer->due < now) timer->due = now + interval; // fell behind: no burst to catch up
        timer->firing = true;
        QTimerEvent event(id);
        QCoreApplication::sendEvent(timer->object, &event);
        timer = findTimer(id);
        if (timer != timers_.end()) timer->firing = false;
    }
    return !due.empty();
}

void EpollDispatcher::rewatch(int fd) {
    const auto found = watches_.find(fd);
    if (found == watches_.end()) return;
    Watch& watch = found->second;
    uint32_t mask = 0;
    if (watch.notifiers[QSocketNotifier::Read]) mask |= EPOLLIN;
    if (watch.notifiers[QSocketNotifier::Write]) mask |= EPOLLOUT;
    if (watch.notifiers[QSocketNotifier::Exception]) mask |= EPOLLPRI;
    if (mask == 0) {
        // The descriptor may be closed already, which took it out of the set.
        if (watch.added) epoll_ctl(epoll_, EPOLL_CTL_DEL, fd, nullptr);
        watches_.erase(found);
        return;
    }
    if (!watch.added) watch.generation = nextGeneration();
    epoll_event event{};
    event.events = mask;
    event.data.u64 = (static_cast<uint64_t>(watch.generation) << 32) | static_cast<uint32_t>(fd);
    // A descriptor closed and opened again under the same number left the set when it closed:
    // it is another descriptor now, watched under a new generation.
    if (watch.added && epoll_ctl(epoll_, EPOLL_CTL_MOD, fd, &event) != 0) {
        watch.generation = nextGeneration();
        event.data.u64 = (static_cast<uint64_t>(watch.generation) << 32) | static_cast<uint32_t>(fd);
        epoll_ctl(epoll_, EPOLL_CTL_ADD, fd, &event);
    } else if (!watch.added) {
        epoll_ctl(epoll_, EPOLL_CTL_ADD, fd, &event);
    }
    watch.added = true;
}

void EpollDispatcher::registerSocketNotifier(QSocketNotifier* notifier) {
    const int fd = static_cast<int>(notifier->socket());
    watches_[fd].notifiers[notifier->type()] = notifier;
    rewatch(fd);
}

void EpollDispatcher::unregisterSocketNotifier(QSocketNotifier* notifier) {
    const int fd = static_cast<int>(notifier->socket());
    const auto found = watches_.find(fd);
    if (found == watches_.end() || found->second.notifiers[notifier->type()] != notifier) return;
    found->second.notifiers[notifier->type()] = nullptr;
    rewatch(fd);
}

void EpollDispatcher::registerTimer(int id, qint64 interval, Qt::TimerType type, QObject* object) {
    timers_.push_back(
        {id, interval, type, object, Clock::now() + std::chrono::milliseconds(interval), false});
}

bool EpollDispatcher::unregisterTimer(int id) {
    const auto timer = findTimer(id);
    if (timer == timers_.end()) return false;
    timers_.erase(timer);
    return true;
}

bool EpollDispatcher::unregisterTimers(QObject* object) {
    return std::erase_if(timers_, [object](const Timer& t) { return t.object == object; }) > 0;
}

QList<QAbstractEventDispatcher::TimerInfo> EpollDispatcher::registeredTimers(QObject* object) const {
    QList<TimerInfo> list;
    for (const Timer& timer : timers_)
        if (timer.object == object)
            list.append(TimerInfo(timer.id, static_cast<int>(timer.interval), timer.type));
    return list;
}

int EpollDispatcher::remainingTime(int id) {
    const auto timer = findTimer(id);
    if (timer == timers_.end()) return -1;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(timer->due - Clock::now()).count();
    return static_cast<int>(std::max<decltype(left)>(left, 0));
}

// Qt calls this whenever an event is posted. On the loop's own thread the loop is running, so
// noting it is enough (the wait will not block); another thread must end the wait.
void EpollDispatcher::wakeUp() {
    woken_.store(true);
    if (std::this_thread::get_id() == owner_) return;
    if (!wakeArmed_.exchange(true)) eventfd_write(wake_, 1);
}

void EpollDispatcher::interrupt() {
    interrupted_.store(true);
    wakeUp();
}

} // namespace

QAbstractEventDispatcher* createEventDispatcher() {
    return new EpollDispatcher;
}

#endif
