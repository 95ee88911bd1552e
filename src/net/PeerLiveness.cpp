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

#include <algorithm>

void watchPeerLiveness(qintptr descriptor, int silenceLimitSeconds) {
    const int limit = std::max(1, silenceLimitSeconds);
    const int idleSeconds = std::max(1, limit / 3);
    const int probeIntervalSeconds = std::max(1, limit / 6);
#if defined(Q_OS_WIN)
    const auto s = static_cast<SOCKET>(descriptor);
    tcp_keepalive values{};
    values.onoff = 1;
    values.keepalivetime = idleSeconds * 1000;
    values.keepaliveinterval = probeIntervalSeconds * 1000;
    DWORD returned = 0;
    WSAIoctl(s, SIO_KEEPALIVE_VALS, &values, sizeof values, nullptr, 0, &returned, nullptr, nullptr);
#if defined(TCP_MAXRT)
    DWORD maxRetransmitSeconds = static_cast<DWORD>(limit);
    setsockopt(s, IPPROTO_TCP, TCP_MAXRT, reinterpret_cast<const char*>(&maxRetransmitSeconds),
               sizeof maxRetransmitSeconds);
#endif
#else
    const int s = static_cast<int>(descriptor);
    const int on = 1;
    setsockopt(s, SOL_SOCKET, SO_KEEPALIVE, &on, sizeof on);
#if defined(TCP_KEEPIDLE)
    const int probes = std::max(1, (limit - idleSeconds) / probeIntervalSeconds);
    setsockopt(s, IPPROTO_TCP, TCP_KEEPIDLE, &idleSeconds, sizeof idleSeconds);
    setsockopt(s, IPPROTO_TCP, TCP_KEEPINTVL, &probeIntervalSeconds, sizeof probeIntervalSeconds);
    setsockopt(s, IPPROTO_TCP, TCP_KEEPCNT, &probes, sizeof probes);
#endif
#if defined(TCP_USER_TIMEOUT)
    const unsigned int unacknowledgedMs = static_cast<unsigned int>(limit) * 1000;
    setsockopt(s, IPPROTO_TCP, TCP_USER_TIMEOUT, &unacknowledgedMs, sizeof unacknowledgedMs);
#endif
#endif
}
