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
#endif
