// The loop these tests run on is the one the server runs on without windows (see CoreTestMain):
// what the server leans on is driven through Qt's own objects here.
#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QSocketNotifier>
#include <QTimer>
#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <thread>

#if defined(Q_OS_UNIX)
#include <sys/socket.h>
#include <unistd.h>
#endif

namespace {
// Runs the loop until quit() or the limit; returns the milliseconds it ran.
qint64 runLoop(QEventLoop& loop, int limitMs = 5000) {
    QElapsedTimer clock;
    clock.start();
    QTimer::singleShot(limitMs, &loop, &QEventLoop::quit);
    loop.exec();
    return clock.elapsed();
}
} // namespace

TEST(EventDispatcher, TimersFireWhenDueAndStopFromTheirOwnEvent) {
    QEventLoop loop;
    int ticks = 0;
    QTimer repeating;
    repeating.setInterval(10);
    QObject::connect(&repeating, &QTimer::timeout, [&] {
        if (++ticks == 3) repeating.stop(); // stopped inside its own event: it never fires again
    });
    repeating.start();
    QTimer single;
    single.setSingleShot(true);
    single.start(60);
    EXPECT_GT(single.remainingTime(), 30);
    bool singleFired = false;
    QObject::connect(&single, &QTimer::timeout, [&] {
        singleFired = true;
        QTimer::singleShot(40, &loop, &QEventLoop::quit);
    });
    const qint64 ran = runLoop(loop);
    EXPECT_TRUE(singleFired);
    EXPECT_EQ(ticks, 3);
    EXPECT_GE(ran, 95); // 60 + 40 ms, not earlier
    EXPECT_LT(ran, 2000);
}

TEST(EventDispatcher, APostFromAnotherThreadEndsAWaitWithNothingElseToWakeIt) {
    QEventLoop loop;
    std::thread poster([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        QMetaObject::invokeMethod(&loop, &QEventLoop::quit, Qt::QueuedConnection);
    });
    const qint64 ran = runLoop(loop);
    poster.join();
    EXPECT_LT(ran, 2000); // the 5 s limit was not what ended it
}

#if defined(Q_OS_UNIX)
TEST(EventDispatcher, ANotifierMayGoAwayInItsOwnEventAndTheDescriptorBeWatchedAgain) {
    int pair[2];
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, pair), 0);
    QEventLoop loop;

    // Readable: the notifier deletes itself while it is being served.
    auto reader = std::make_unique<QSocketNotifier>(pair[0], QSocketNotifier::Read);
    int reads = 0;
    QObject::connect(reader.get(), &QSocketNotifier::activated, [&] {
        ++reads;
        reader.reset();
        QTimer::singleShot(20, &loop, &QEventLoop::quit);
    });
    ASSERT_EQ(::write(pair[1], "x", 1), 1);
    runLoop(loop);
    EXPECT_EQ(reads, 1);

    // The same descriptor watched again after that: the new notifier is served.
    QSocketNotifier again(pair[0], QSocketNotifier::Read);
    QObject::connect(&again, &QSocketNotifier::activated, [&] {
        ++reads;
        again.setEnabled(false);
        loop.quit();
    });
    runLoop(loop);
    EXPECT_EQ(reads, 2);
    ::close(pair[1]);
    ::close(pair[0]);
}

// Two descriptors ready in one wait; serving the first closes the second, and a new descriptor
// opened at once gets the second's number and a notifier of its own. The second's event from
// that wait was for the descriptor that is gone: it must not reach the newcomer's notifier.
TEST(EventDispatcher, AnEventForADescriptorClosedInTheSameWaitMissesTheOneThatTookItsNumber) {
    struct Pair {
        int ends[2] = {-1, -1};
        std::unique_ptr<QSocketNotifier> notifier;
        int activations = 0;
    };
    Pair pairs[2];
    Pair newcomer;
    QEventLoop loop;
    bool swapped = false;
    for (int i = 0; i < 2; ++i) {
        ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, pairs[i].ends), 0);
        pairs[i].notifier = std::make_unique<QSocketNotifier>(pairs[i].ends[0], QSocketNotifier::Read);
    }
    for (int i = 0; i < 2; ++i) {
        Pair& self = pairs[i];
        Pair& other = pairs[1 - i];
        QObject::connect(self.notifier.get(), &QSocketNotifier::activated, [&] {
            ++self.activations;
            char byte;
            [[maybe_unused]] const ssize_t got = ::read(self.ends[0], &byte, 1);
            if (swapped) return;
            swapped = true;
            // Whichever is served first closes the other, whose event is still in this wait's batch.
            const int number = other.ends[0];
            other.notifier.reset();
            ::close(other.ends[0]);
            ::close(other.ends[1]);
            other.ends[0] = other.ends[1] = -1;
            int fresh[2];
            ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, fresh), 0);
            ASSERT_EQ(::dup2(fresh[0], number), number); // as the system hands out a freed number
            ::close(fresh[0]);
            newcomer.ends[0] = number;
            newcomer.ends[1] = fresh[1];
            newcomer.notifier = std::make_unique<QSocketNotifier>(newcomer.ends[0], QSocketNotifier::Read);
            QObject::connect(newcomer.notifier.get(), &QSocketNotifier::activated,
                             [&] { ++newcomer.activations; });
            QTimer::singleShot(50, &loop, &QEventLoop::quit);
        });
    }
    ASSERT_EQ(::write(pairs[0].ends[1], "x", 1), 1);
    ASSERT_EQ(::write(pairs[1].ends[1], "x", 1), 1);
    runLoop(loop);
    EXPECT_TRUE(swapped);
    EXPECT_EQ(pairs[0].activations + pairs[1].activations, 1);
    // Nothing was written to the newcomer: nothing may tell it it is readable.
    EXPECT_EQ(newcomer.activations, 0);
    for (Pair* pair : {&pairs[0], &pairs[1], &newcomer}) {
        pair->notifier.reset();
        for (int end : pair->ends)
            if (end >= 0) ::close(end);
    }
}
#endif
