#pragma once
// Who pays for what the server sends while it serves one connection's arrival: that connection,
// for every byte that goes to another connection, from its broadcast budget (see SendBudget).
// Answers to the connection itself are bounded by its output cap instead; sends outside any
// arrival (keep-alive, closes, the operator's commands) are nobody's.
#include "net/SocketElement.h"

class BroadcastPayer {
  public:
    // From here to the end of the scope, `serving` pays at `rate` bytes a second (0: nobody pays).
    BroadcastPayer(SocketElement& serving, qint64 rate);
    ~BroadcastPayer();
    BroadcastPayer(const BroadcastPayer&) = delete;
    BroadcastPayer& operator=(const BroadcastPayer&) = delete;

    static bool isPayer(const SocketElement* element);
    // Bytes sent to `receiver` (null: to others, already counted so), paid unless it is the payer.
    static void charge(const SocketElement* receiver, size_t bytes);

  private:
    SocketElement* previous_;
    qint64 previousRate_;
};
