#include "app/SignalBridge.h"

#include <QSocketNotifier>

#ifdef Q_OS_UNIX
#include <csignal>
#include <sys/socket.h>
#include <unistd.h>

namespace {
int signalPair[2] = {-1, -1};

void onSignal(int) {
    char c = 1;
    [[maybe_unused]] ssize_t n = ::write(signalPair[0], &c, 1);
}
} // namespace

SignalBridge::SignalBridge(QObject* parent) : QObject(parent) {
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, signalPair) != 0) return;
    notifier_ = new QSocketNotifier(signalPair[1], QSocketNotifier::Read, this);
    connect(notifier_, &QSocketNotifier::activated, this, [this] {
        char c;
        [[maybe_unused]] ssize_t n = ::read(signalPair[1], &c, 1);
        emit terminationRequested();
    });
    struct sigaction action {};
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    sigaction(SIGTERM, &action, nullptr);
    sigaction(SIGINT, &action, nullptr);
}

// The process is on its way out: a further signal must not end it half-way with the signal's
// status instead of the shutdown's.
SignalBridge::~SignalBridge() {
    signal(SIGTERM, SIG_IGN);
    signal(SIGINT, SIG_IGN);
}
#elif !defined(Q_OS_WIN) // Windows: SignalBridgeWindows.cpp
SignalBridge::SignalBridge(QObject* parent) : QObject(parent) {}
SignalBridge::~SignalBridge() = default;
#endif
