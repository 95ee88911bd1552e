#include "net/PeerLiveness.h"

#if defined(Q_OS_WIN)
// Each of these needs the types of the ones before it.
#include <winsock2.h>

#include <windows.h>

#include <ws2tcpip.h>

#include <mstcpip.h>
#else
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#endif

namespace {
constexpr int kIdleSeconds = 20;
constexpr int kProbeIntervalSeconds = 10;
constexpr int kProbes = 4;
} // namespace

void watchPeerLiveness(qintptr descriptor) {
#if defined(Q_OS_WIN)
    const auto s = static_cast<SOCKET>(descriptor);
    tcp_keepalive values{};
    values.onoff = 1;
    values.keepalivetime = kIdleSeconds * 1000;
    values.keepaliveinterval = kProbeIntervalSeconds * 1000;
    DWORD returned = 0;
    WSAIoctl(s, SIO_KEEPALIVE_VALS, &values, sizeof values, nullptr, 0, &returned, nullptr, nullptr);
#if defined(TCP_MAXRT)
    DWORD maxRetransmitSeconds = kPeerSilenceLimitSeconds;
    setsockopt(s, IPPROTO_TCP, TCP_MAXRT, reinterpret_cast<const char*>(&maxRetransmitSeconds),
               sizeof maxRetransmitSeconds);
#endif
#else
    const int s = static_cast<int>(descriptor);
    const int on = 1;
    setsockopt(s, SOL_SOCKET, SO_KEEPALIVE, &on, sizeof on);
#if defined(TCP_KEEPIDLE)
    setsockopt(s, IPPROTO_TCP, TCP_KEEPIDLE, &kIdleSeconds, sizeof kIdleSeconds);
    setsockopt(s, IPPROTO_TCP, TCP_KEEPINTVL, &kProbeIntervalSeconds, sizeof kProbeIntervalSeconds);
    setsockopt(s, IPPROTO_TCP, TCP_KEEPCNT, &kProbes, sizeof kProbes);
#endif
#if defined(TCP_USER_TIMEOUT)
    const unsigned int unacknowledgedMs = kPeerSilenceLimitSeconds * 1000;
    setsockopt(s, IPPROTO_TCP, TCP_USER_TIMEOUT, &unacknowledgedMs, sizeof unacknowledgedMs);
#endif
#endif
}
