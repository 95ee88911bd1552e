#pragma once
// A peer's close or reset that the system never reports. Windows' event loop switches a
// socket's notifications off from the moment it reports one of them until the loop has handled
// it, and a connection comes out of the accept with them off. Under Wine a reset that arrives in
// such a moment (or before the accept) is dropped, and the connection is never reported again:
// a client that aborts just then would hold its slot, or the AI Spy link, until the server next
// wrote to it. Where that can happen every open connection is looked at a few times a second,
// and one whose peer has gone ends as the system would have ended it. With epoll (Linux) every
// close is reported and nothing is watched.
#include <QtGlobal>

class SocketElement;

namespace missed_closes {

inline constexpr int kLookEveryMs = 250;

// An element whose connection is open; it is looked at until forgotten.
void watch(SocketElement& element);
void forget(SocketElement& element);

enum class PeerEnd {
    None,   // still there (or it sent data not read yet: its close comes after that)
    Closed, // closed or reset by the peer: the close event
    Failed, // ended by the network: the error event
};
// Asks the system about the connection without waiting and without taking its data.
PeerEnd lookAt(qintptr descriptor);

} // namespace missed_closes
