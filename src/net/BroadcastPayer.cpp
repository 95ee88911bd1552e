#include "net/BroadcastPayer.h"

namespace {
// One event loop, one arrival served at a time.
SocketElement* payer = nullptr;
qint64 payerRate = 0;
} // namespace

BroadcastPayer::BroadcastPayer(SocketElement& serving, qint64 rate)
    : previous_(payer), previousRate_(payerRate) {
    payer = rate > 0 ? &serving : nullptr;
    payerRate = rate;
}

BroadcastPayer::~BroadcastPayer() {
    payer = previous_;
    payerRate = previousRate_;
}

bool BroadcastPayer::isPayer(const SocketElement* element) {
    return element == payer;
}

void BroadcastPayer::charge(const SocketElement* receiver, size_t bytes) {
    if (!payer || receiver == payer) return;
    payer->budget().spend(static_cast<qint64>(bytes), payerRate);
}
