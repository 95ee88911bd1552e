#pragma once
// The process's limit on open descriptors. Near it, accepting would fail again and again for a
// connection the system keeps offering: listeners pause instead and try again shortly.
#include <QtGlobal>

namespace descriptors {
// Raises the soft limit to the hard one, once at start-up.
void raiseSoftLimit();
// Whether a descriptor just accepted shows the process near its limit. Descriptors are handed
// out lowest first, so a high one means the ones below are all in use.
bool nearLimit(qintptr accepted);
// Whether the next descriptor the process opens would leave it clear of its limit.
bool roomToAccept();
} // namespace descriptors
