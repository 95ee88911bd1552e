#pragma once
// Which of a channel's slots 1..48 are taken. The players' table also numbers the simulators'
// airplanes: an airplane takes the lowest free player slot as its number.
#include "basics/RuntimeError.h"

#include <array>
#include <cstdint>

inline constexpr int kMaxSlot = 48;
using SlotTable = std::array<bool, kMaxSlot + 1>;

// The lowest free entry from 1 to 48, or 0 when every one is taken.
inline int16_t lowestFreeSlot(const SlotTable& table) {
    for (int16_t n = 1; n <= kMaxSlot; ++n)
        if (!table[static_cast<size_t>(n)]) return n;
    return 0;
}

// One entry, "Subscript out of range" outside the table.
inline bool& slotFlag(SlotTable& table, long n) {
    if (n < 0 || n >= static_cast<long>(table.size())) throw errors::subscriptOutOfRange();
    return table[static_cast<size_t>(n)];
}

// Whether the slot is a taken one of 1..48.
inline bool slotTaken(const SlotTable& table, int slot) {
    return slot >= 1 && slot <= kMaxSlot && table[static_cast<size_t>(slot)];
}
