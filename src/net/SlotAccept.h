#pragma once
#include "net/CommandRec.h"
#include "net/SocketArray.h"
#include "server/ErrorTrap.h"

#include <array>

using SlotTable = std::array<bool, SocketArray::kMaxIndex + 1>;

// A connection request on a channel's listener: the lowest free slot 1..48 is loaded and
// accepts, and the channel's command arrays grow to it. With every slot taken the scan
// leaves 0: loading element 0 fails, the accept on the listener fails, and the request is
// refused; the failures stay pending in the trap.
inline void acceptOnLowestFreeSlot(SocketArray& sockets, SlotTable& used, VbList<CommandList>& commands,
                                   qintptr requestId, ErrorTrap& trap) {
    int slot = 0;
    for (int i = 1; i <= SocketArray::kMaxIndex; ++i)
        if (!used[static_cast<size_t>(i)]) {
            slot = i;
            break;
        }
    trap([&] { sockets.load(slot); });
    used[static_cast<size_t>(slot)] = true;
    trap([&] { sockets.accept(slot, requestId); });
    trap([&] {
        if (slot > commands.ubound()) commands.preserveUpperBound(slot);
    });
}
