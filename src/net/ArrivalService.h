#pragma once
// Serving one connection's arrival on a channel of NUL-ended messages. Its messages are handed
// to the channel's handler one by one, while whatever they answer goes to the same peer
// uncut. A peer that asks for more than it reads is not served further until it has read:
// the rest of its arrival is held in its element, and the element's drained event resumes it.
// So a reading peer gets every answer whole, and one that stops reading costs at most the
// output cap and one answer. A peer whose messages made the server send more to the others
// than its broadcast budget allows is held the same way until the budget is paid: its messages
// are served later, none is dropped.
#include "net/Framing.h"
#include "net/SocketElement.h"

#include <string_view>

template <typename Handle>
void serveMessages(SocketElement& element, std::string_view messages, Handle&& handle) {
    MessageCursor cursor(messages);
    Message message;
    // What the connection held before this event does not change until the event is over; only
    // what the handlers add to its outbox does.
    const qint64 heldBefore = element.bytesQueued() - element.outboxBytes();
    element.setAnswering(true);
    while (!element.mustWait(heldBefore)) {
        if (!cursor.next(message)) {
            element.setAnswering(false);
            element.finishArrival();
            return;
        }
        handle(message);
    }
    element.setAnswering(false);
    element.holdUnhandled(cursor.rest());
}

// A data arrival: reads it, checks it under the channel's ParseData routine, and serves it.
// While an earlier arrival is held, the new one waits in the system.
template <typename Handle>
void serveArrival(SocketElement& element, ErrorLog& log, std::string_view parseRoutine, Handle&& handle) {
    if (element.holdsUnhandled()) {
        element.passOverArrival();
        return;
    }
    const std::string_view arrival = element.readMessages();
    checkArrival(arrival, log, parseRoutine);
    serveMessages(element, arrival, handle);
}

// The drained event: the held rest of the arrival is served.
template <typename Handle> void resumeArrival(SocketElement& element, Handle&& handle) {
    if (!element.holdsUnhandled()) return;
    serveMessages(element, element.unhandled(), handle);
}
