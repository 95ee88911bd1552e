#include "net/MissedCloses.h"

#include "net/SocketElement.h"

#include <QCoreApplication>
#include <QPointer>
#include <QTimer>

#include <algorithm>
#include <vector>

#if defined(Q_OS_WIN)
#include <winsock2.h>
#else
#include <cerrno>
#include <sys/socket.h>
#endif

namespace {

#if defined(Q_OS_WIN)
constexpr bool kClosesCanBeMissed = true;
#else
constexpr bool kClosesCanBeMissed = false;
#endif

std::vector<SocketElement*> watched;
QPointer<QTimer> looker;

void lookAtEach() {
    // A copy: an element whose connection ends leaves the list on the way.
    const std::vector<SocketElement*> each = watched;
    for (SocketElement* element : each)
        if (std::find(watched.begin(), watched.end(), element) != watched.end()) element->endIfPeerGone();
}

} // namespace

namespace missed_closes {

void watch(SocketElement& element) {
    if (!kClosesCanBeMissed) return;
    watched.push_back(&element);
    if (!looker) {
        looker = new QTimer(QCoreApplication::instance());
        looker->setInterval(kLookEveryMs);
        QObject::connect(looker, &QTimer::timeout, looker, &lookAtEach);
    }
    if (!looker->isActive()) looker->start();
}

void forget(SocketElement& element) {
    std::erase(watched, &element);
    if (watched.empty() && looker) looker->stop();
}

// One byte peeked: none at all is the peer's close, and so is a reset or abort, as the socket's
// own read reports them; what the system is only short of for now is no end.
PeerEnd lookAt(qintptr descriptor) {
    char byte = 0;
#if defined(Q_OS_WIN)
    const int got = ::recv(static_cast<SOCKET>(descriptor), &byte, 1, MSG_PEEK);
    if (got >= 0) return got == 0 ? PeerEnd::Closed : PeerEnd::None;
    switch (WSAGetLastError()) {
    case WSAEWOULDBLOCK:
    case WSAEINPROGRESS:
    case WSAEINTR:
    case WSAENOBUFS:
        return PeerEnd::None;
    case WSAECONNRESET:
    case WSAECONNABORTED:
        return PeerEnd::Closed;
    default:
        return PeerEnd::Failed;
    }
#else
    const ssize_t got = ::recv(static_cast<int>(descriptor), &byte, 1, MSG_PEEK | MSG_DONTWAIT);
    if (got >= 0) return got == 0 ? PeerEnd::Closed : PeerEnd::None;
    switch (errno) {
    case EAGAIN:
#if EWOULDBLOCK != EAGAIN
    case EWOULDBLOCK:
#endif
    case EINTR:
    case ENOBUFS:
    case ENOMEM:
        return PeerEnd::None;
    case ECONNRESET:
        return PeerEnd::Closed;
    default:
        return PeerEnd::Failed;
    }
#endif
}

} // namespace missed_closes
