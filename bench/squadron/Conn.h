#pragma once
// A non-blocking loopback TCP connection of one simulated peer.
//
// Output: every message is queued whole and written in pieces of at most 16 KiB that end on
// a message boundary, so on loopback a message reaches the server in one piece unless the
// kernel took only part of a write. Such a message is reported through onSplit: the server
// may read its two halves apart and drop it by design.
// Input: the bytes are cut at each NUL into messages (a peer may keep a buffer; only the
// server deliberately does not).
#include "EventLoop.h"

#include <netinet/in.h>

#include <cstdint>
#include <deque>
#include <functional>
#include <string>
#include <string_view>

struct SendTag {
    enum Kind : uint8_t { None, Stream, Request } kind = None;
    int stream = -1;
    uint32_t seq = 0;
};

class Conn : public FdHandler {
  public:
    struct Callbacks {
        std::function<void()> connected;
        std::function<void(std::string_view)> message; // without the NUL
        std::function<void()> closed;                  // by the server, or failed to connect
        std::function<void(const SendTag&)> split;
    };

    Conn(EventLoop& loop, Callbacks callbacks) : loop_(loop), cb_(std::move(callbacks)) {}
    ~Conn();
    Conn(const Conn&) = delete;
    Conn& operator=(const Conn&) = delete;

    // receiveBuffer > 0 shrinks the socket's receive buffer (a peer that stops reading then
    // pushes its backlog into the server quickly).
    bool open(const sockaddr_in& address, int receiveBuffer = 0);
    // The address this end binds to before it connects (all of 127/8 is this machine's); without
    // one, each connection takes the next address of the spread, if one was set.
    void setSource(const in_addr& source) {
        source_ = source;
        hasSource_ = true;
    }
    // Honest peers come from `count` addresses from `first` on, in turn, as a squadron's members
    // come from homes of their own (0: from the system's choice).
    static void spreadSources(const in_addr& first, int count);
    bool isOpen() const { return fd_ >= 0 && connected_; }
    bool isActive() const { return fd_ >= 0; }
    // msg is the whole message with its NUL; raw bytes are queued as one piece.
    void send(std::string_view msg, SendTag tag = {});
    void setReading(bool on);
    // Reads at most maxBytes of what has arrived, whether or not reading is on (a peer that
    // reads slowly switches reading off and pulls on a timer).
    void pull(size_t maxBytes);
    // Pieces written to the system are at most this long (16 KiB unless changed): a hostile
    // peer hands a whole batch to one write.
    void setWriteChunk(size_t bytes) { writeChunk_ = bytes; }
    // Before open(): the largest segment this end accepts. Small segments keep what the
    // server's system buffers for the connection small, so its own queue holds the rest.
    void setMaxSegment(int bytes) { maxSegment_ = bytes; }
    // Half-close once everything queued is written: the server sees the close, while this end
    // stays open (and, without reading, keeps the server's output waiting).
    void shutdownWrite();
    // Closes at once; unsent output is thrown away.
    void close();
    size_t queuedBytes() const { return size_t(queued_ - written_); }
    uint64_t bytesRead() const { return bytesRead_; }

    void onEvents(uint32_t events) override;

  private:
    struct Pending {
        uint64_t start, end;
        SendTag tag;
    };
    void flush();
    void readSome(size_t maxBytes);
    void updateInterest();
    void fail();

    EventLoop& loop_;
    Callbacks cb_;
    int fd_ = -1;
    in_addr source_{};
    bool hasSource_ = false;
    bool connected_ = false;
    bool reading_ = true;
    bool shutdownPending_ = false;
    size_t writeChunk_ = 16 * 1024;
    int maxSegment_ = 0;
    uint32_t interest_ = 0;
    std::string out_;
    size_t outOffset_ = 0;
    uint64_t queued_ = 0, written_ = 0;
    std::deque<Pending> pending_;
    std::string in_;
    uint64_t bytesRead_ = 0;
};
