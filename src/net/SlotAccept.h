#pragma once
#include "net/SocketArray.h"
#include "server/ErrorTrap.h"

#include <array>

using SlotTable = std::array<bool, SocketArray::kMaxIndex + 1>;

// A connection request on a channel's listener: the lowest free slot 1..48 is loaded and
// accepts. With every slot taken the scan
// leaves 0: loading element 0 fails, the accept on the listener fails, and the request is
// refused; the failures stay pending in the trap.
inline void acceptOnLowestFreeSlot(SocketArray& sockets, SlotTable& used, qintptr requestId,
                                   ErrorTrap& trap) {
    int slot = 0;
    for (int i = 1; i <= SocketArray::kMaxIndex; ++i)
        if (!used[static_cast<size_t>(i)]) {
            slot = i;
            break;
        }
    trap([&] { sockets.load(slot); });
    used[static_cast<size_t>(slot)] = true;
    trap([&] { sockets.accept(slot, requestId); });
}

// A peer may register more than once on its connection (each registration is listed, and
// answered, on its own), but not without end: past this many, a registration raises "Out of
// memory" into the routine's trap and lists nothing. Honest peers register once.
inline constexpr int kMaxListingsPerSlot = 4;
inline RuntimeError tooManyListings() {
    return {7, "Out of memory"};
}
