#pragma once
// Handing connections' gathered output to the system in as few calls as it takes.
#include <QtGlobal>

#include <cstddef>
#include <span>
#include <string_view>

// Writes the pieces, in order, as far as the system takes them now, without waiting; returns
// how many bytes it took. Where this is not done directly it takes nothing, and the socket's
// own queue writes everything.
size_t writeWithoutWaiting(qintptr descriptor, std::span<const std::string_view> pieces);

// One connection's share of a hand-over to many.
struct GatheredWrite {
    qintptr descriptor;
    std::span<const std::string_view> pieces;
    size_t taken = 0; // filled in: how many bytes the system took
};

// writeWithoutWaiting() for each connection; where the system allows, all of them in one call.
void writeEachWithoutWaiting(std::span<GatheredWrite> writes);
