#pragma once
// Reading and marking the slot tables that number connections and airplanes.
#include "net/SlotAccept.h"
#include "server/RuntimeError.h"

#include <cstdint>

// The lowest free entry from 1 to 48, or 0 when every one is taken.
inline int16_t lowestFreeSlot(const SlotTable& table) {
    for (int16_t n = 1; n <= SocketArray::kMaxIndex; ++n)
        if (!table[static_cast<size_t>(n)]) return n;
    return 0;
}

// One entry, "Subscript out of range" outside the table.
inline bool& slotFlag(SlotTable& table, long n) {
    if (n < 0 || n >= static_cast<long>(table.size())) throw errors::subscriptOutOfRange();
    return table[static_cast<size_t>(n)];
}
