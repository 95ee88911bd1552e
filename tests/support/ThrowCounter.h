#pragma once
// Counts the C++ exceptions thrown in this process, so a test can tell a failing statement
// that unwinds (costly, and a peer may make every message fail) from one that is merely
// raised into its trap. Only where the exception runtime can be wrapped (Linux with glibc);
// elsewhere the count is unknown.
#include <optional>

extern "C" long tessarkExceptionsThrown(); // -1 where they are not counted

inline std::optional<long> exceptionsThrownSoFar() {
    const long n = tessarkExceptionsThrown();
    return n < 0 ? std::nullopt : std::optional<long>(n);
}
