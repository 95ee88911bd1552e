#include "net/PeerAddress.h"

#if defined(Q_OS_WIN)
#include <winsock2.h>

#include <ws2tcpip.h>
#else
#include <sys/socket.h>
#endif

QHostAddress plainAddress(const QHostAddress& address) {
    bool isV4 = false;
    const quint32 v4 = address.toIPv4Address(&isV4);
    return isV4 ? QHostAddress(v4) : address;
}

QHostAddress shareKeyOf(const QHostAddress& address) {
    const QHostAddress plain = plainAddress(address);
    if (plain.protocol() != QAbstractSocket::IPv6Protocol) return plain;
    Q_IPV6ADDR bytes = plain.toIPv6Address();
    for (int i = 8; i < 16; ++i)
        bytes[i] = 0;
    return QHostAddress(bytes);
}

QHostAddress peerAddressOf(qintptr descriptor) {
    sockaddr_storage storage{};
    socklen_t length = sizeof storage;
#if defined(Q_OS_WIN)
    if (getpeername(static_cast<SOCKET>(descriptor), reinterpret_cast<sockaddr*>(&storage), &length) != 0)
        return {};
#else
    if (getpeername(static_cast<int>(descriptor), reinterpret_cast<sockaddr*>(&storage), &length) != 0)
        return {};
#endif
    return plainAddress(QHostAddress(reinterpret_cast<const sockaddr*>(&storage)));
}
