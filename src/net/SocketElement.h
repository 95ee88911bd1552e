#pragma once
#include "net/PeerLiveness.h"
#include "net/SendBudget.h"

#include <QByteArray>
#include <QDateTime>
#include <QHostAddress>
#include <QObject>
#include <QString>

#include <span>
#include <string>
#include <string_view>
#include <vector>

class QTcpSocket;
class QTimer;

// What the operator's settings give each connection when it is accepted.
struct ConnectionTerms {
    int silenceLimitSeconds = kPeerSilenceLimitSeconds; // see PeerLiveness
    qint64 budgetRate = 0; // bytes a second its messages may make the server send to others (0: no limit)
};

// One socket control: an accepted connection of a control array, or the single AI Spy link.
// It raises the four events of the server's model (data arrival, close, error) with its index
// and keeps the state numbers the routines test: 0 closed, 7 connected.
class SocketElement : public QObject {
    Q_OBJECT
  public:
    static constexpr int Closed = 0;
    static constexpr int Connected = 7;
    static constexpr int Closing = 8;
    static constexpr int Error = 9;
    // A peer that never reads must not grow the server: a message that would take a
    // connection's unsent output past this is dropped whole, like a send to a closed socket.
    static constexpr qint64 kOutputCap = 4 * 1024 * 1024;
    // The most one arrival reads; what else waits in the system is read on the next turn of the
    // loop, so one busy peer cannot hold the others up.
    static constexpr qint64 kMaxArrivalBytes = 256 * 1024;
    // The AI Spy's arrival is one command: its size is its record batch, read whole up to this.
    static constexpr qint64 kMaxWholeArrivalBytes = 1024 * 1024;

    explicit SocketElement(int index, QObject* parent = nullptr);
    ~SocketElement() override;

    int index() const { return index_; }
    // The system's handle of the connection, -1 when there is none.
    qintptr descriptor() const;
    int state() const;
    // What the operator's status shows of a connection: the peer's address ("" when none), when
    // it was accepted, and how many messages the output cap dropped since.
    QString peerAddress() const;
    QDateTime connectedSince() const { return connectedSince_; }
    qint64 messagesDropped() const { return messagesDropped_; }
    // The peer's address as limits count it (see shareKeyOf), kept from the accept on.
    const QHostAddress& peerHost() const { return peerHost_; }
    const QHostAddress& shareKey() const { return shareKey_; }
    // Whether the peer said who it is; the grace for that counts from the accept.
    bool registered() const { return registered_; }
    void setRegistered() { registered_ = true; }
    qint64 msSinceAccepted() const;
    // Takes over an accepted connection; "wrong state" unless this element is closed.
    void accept(qintptr requestId, const ConnectionTerms& terms = {});
    // What this connection's messages made the server send to others, against its budget.
    SendBudget& budget() { return budget_; }
    // Whether its further messages must wait: its output backed up past the cap (counting what
    // was queued before the event), or its broadcast budget is overdrawn.
    bool mustWait(qint64 heldBefore) {
        return heldBefore + outboxBytes() >= kOutputCap || (budgetRate_ > 0 && budget_.overdrawn());
    }
    qint64 budgetRate() const { return budgetRate_; }

    // Reads one arrival of NUL-ended messages. When this read had to stop short of what was
    // waiting (it filled a whole arrival), the read was cut here and not by the peer: the unfinished message
    // at its end is kept for the next read rather than lost (a message longer than the framing allows is
    // dropped whole instead). The view is valid until the next read.
    std::string_view readMessages();
    // Reads one arrival as it is (the AI Spy channel: one command per arrival).
    std::string_view readWhole();

    // The arrival's handling stopped before `rest` (a view into the last read) because this
    // connection's own output backed up; `drained` is raised when the peer has read enough to
    // go on with unhandled().
    void holdUnhandled(std::string_view rest);
    bool holdsUnhandled() const { return held_; }
    std::string_view unhandled() const;
    // The arrival is finished: a hold is released, and when a data arrival was passed over
    // meanwhile it is raised again.
    void finishArrival();
    // A data arrival came while the element held an earlier one; it is raised again later.
    void passOverArrival() { passedOver_ = true; }

    // Queues one whole message, command + data + NUL; "wrong state" unless connected. Never
    // blocks. Messages sent within one event are gathered and handed to the connection
    // together when the event is over, which is when the connection would start writing them
    // anyway: a relay to many clients costs one system write per client and event.
    void send(std::string_view command, std::string_view data);
    // A message for many connections, framed once into the current event's shared output.
    struct SharedMessage {
        size_t offset;
        size_t size;
    };
    static SharedMessage frameShared(std::string_view command, std::string_view data);
    // send() of a message framed by frameShared(), or nothing when the connection is not
    // connected: the same bytes in the same place among this connection's messages, without a
    // copy per connection; they go from the shared output to each connection when the event's
    // output is handed over.
    void sendShared(const SharedMessage& message) {
        // The usual case, kept inline: the message follows the last one this connection took.
        if (!pieces_.empty()) {
            Piece& last = pieces_.back();
            if (last.shared && last.begin + last.size == message.offset && fits(message.size)) {
                last.size += message.size;
                outboxSize_ += message.size;
                return;
            }
        }
        startSharedPiece(message);
    }
    // While a connection's own requests are handled, what it is sent is its answer: a peer that
    // asked must get all of it, so the cap does not cut it (the channel stops handling the
    // peer's requests instead, until it has read).
    void setAnswering(bool on) { answering_ = on; }
    qint64 outboxBytes() const { return static_cast<qint64>(outboxSize_); }
    // Closes without raising the close event; what was queued still goes out.
    void close();
    // Ends the connection with the close or error event the system should have raised, when it
    // did not report that the peer has gone (see net/MissedCloses.h).
    void endIfPeerGone();
    qint64 bytesQueued() const;

    // Hands the queued output to the system as far as it takes it now, without waiting;
    // returns whether some is still queued.
    bool writeOut();

    // writeOut() for every connection closed by the server that still holds output.
    static bool writeOutClosed();
    // Bytes handed to connections since start, all of them together.
    static qint64 bytesHandedOver();

  signals:
    void dataArrival(int index, qint64 bytes);
    void closed(int index);
    void error(int index, int number, const QString& description);
    // The output that stopped an arrival's handling has gone down; see holdUnhandled().
    void drained(int index);

  private:
    // A run of the outbox: bytes of this connection's own, or of the event's shared output.
    struct Piece {
        bool shared;
        size_t begin;
        size_t size;
    };
    std::string_view read(qint64 limit, bool keepCutMessage);
    void fail(int socketError);
    void release();
    // What a piece of an outbox costs beyond its bytes; counted under the output cap, so that a
    // peer listed many times over cannot grow the bookkeeping past it.
    static constexpr size_t kPieceCost = 24;
    bool fits(size_t size) const {
        return answering_ ||
               queuedBeforeEvent_ +
                       static_cast<qint64>(outboxSize_ + (pieces_.size() + 1) * kPieceCost + size) <=
                   kOutputCap;
    }
    bool admit(size_t size);
    void startSharedPiece(const SharedMessage& message);
    void appendPiece(bool shared, size_t begin, size_t size);
    std::string_view bytesOf(const Piece& piece) const;
    void handOverOutbox();
    static void handOver(std::span<SocketElement* const> elements);
    void finishHandOver(std::span<const std::string_view> pieces, size_t taken);
    qint64 socketQueued() const;
    void noticeDrain();
    static void postHandOver();
    static void handOverAll();
    int index_;
    QTcpSocket* socket_ = nullptr;
    bool errored_ = false;
    bool answering_ = false;
    // Sent during the current event, not yet handed to the connection: the pieces in order,
    // the bytes of the connection's own pieces, and the size of them all.
    std::vector<Piece> pieces_;
    std::string own_;
    size_t outboxSize_ = 0;
    qint64 queuedBeforeEvent_ = 0;           // what the connection still held when the event began
    bool gathered_ = false;                  // listed among the elements to hand over at the event's end
    mutable bool socketHoldsOutput_ = false; // some output went to the socket's own queue
    std::string inbox_;                      // the last read, after what an earlier cut read left over
    std::string carried_;                    // the unfinished message at the end of a cut read
    bool skippingLongMessage_ = false;
    size_t heldFrom_ = 0; // where the held part of inbox_ begins
    bool held_ = false;
    bool passedOver_ = false;
    QDateTime connectedSince_;
    qint64 messagesDropped_ = 0;
    QHostAddress peerHost_;
    QHostAddress shareKey_;
    bool registered_ = false;
    SendBudget::Clock::time_point acceptedAt_{};
    SendBudget budget_;
    qint64 budgetRate_ = 0;
    QTimer* budgetWait_ = nullptr; // resumes a hold when the budget is paid
};
