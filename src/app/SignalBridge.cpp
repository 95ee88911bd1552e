#include "app/SignalBridge.h"

#include <QSocketNotifier>

#ifdef Q_OS_UNIX
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {
int signalPair[2] = {-1, -1};

constexpr int kStopSignals[] = {SIGTERM, SIGINT, SIGQUIT};

// Only async-signal-safe calls here. The pair does not block: when it is full (a storm of
// signals the loop has not read yet), the signal is dropped, since the same request is
// already waiting to be read.
void onSignal(int number) {
    const int saved = errno;
    const char c = static_cast<char>(number);
    [[maybe_unused]] ssize_t n = ::send(signalPair[0], &c, 1, MSG_DONTWAIT | MSG_NOSIGNAL);
    errno = saved;
}

const char* signalName(int number) {
    switch (number) {
    case SIGTERM:
        return "SIGTERM";
    case SIGINT:
        return "SIGINT";
    case SIGQUIT:
        return "SIGQUIT";
    default:
        return "SIGHUP";
    }
}
} // namespace

void ignoreSignalsThatMustNotEndTheServer() {
    signal(SIGPIPE, SIG_IGN);
    signal(SIGUSR1, SIG_IGN);
    signal(SIGUSR2, SIG_IGN);
}

SignalBridge::SignalBridge(QObject* parent) : QObject(parent) {
    ignoreSignalsThatMustNotEndTheServer();
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, signalPair) != 0) return;
    for (int fd : signalPair)
        fcntl(fd, F_SETFL, fcntl(fd, F_GETFL) | O_NONBLOCK);
    notifier_ = new QSocketNotifier(signalPair[1], QSocketNotifier::Read, this);
    connect(notifier_, &QSocketNotifier::activated, this, [this] {
        // Everything that arrived: a stop wins over a reload, and repeats count once.
        char received[64];
        int stop = 0;
        bool reload = false;
        ssize_t n;
        while ((n = ::read(signalPair[1], received, sizeof received)) > 0)
            for (ssize_t i = 0; i < n; ++i) {
                if (received[i] == SIGHUP)
                    reload = true;
                else if (!stop)
                    stop = received[i];
            }
        if (stop)
            emit terminationRequested(signalName(stop));
        else if (reload)
            emit reloadRequested();
    });
    struct sigaction action {};
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    for (int number : kStopSignals)
        sigaction(number, &action, nullptr);
    sigaction(SIGHUP, &action, nullptr);
}

// The process is on its way out: a further signal must not end it half-way with the signal's
// status instead of the shutdown's.
SignalBridge::~SignalBridge() {
    for (int number : kStopSignals)
        signal(number, SIG_IGN);
    signal(SIGHUP, SIG_IGN);
}
#elif !defined(Q_OS_WIN) // Windows: SignalBridgeWindows.cpp
void ignoreSignalsThatMustNotEndTheServer() {}
SignalBridge::SignalBridge(QObject* parent) : QObject(parent) {}
SignalBridge::~SignalBridge() = default;
#endif
