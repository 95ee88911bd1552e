#pragma once
// The sends of one hand-over to many connections, given to the system in one call (Linux's
// submission ring) instead of one call per connection. Linux only.
#include "net/GatheredWrite.h"

#include <span>
#include <vector>

struct io_uring_sqe;
struct io_uring_cqe;
struct iovec;
struct msghdr;

class SendRing {
  public:
    // The ring, set up on first use; null where the system has none or refuses it (older
    // kernels, container profiles that forbid it).
    static SendRing* instance();
    ~SendRing();

    // Sends each write's pieces as far as the system takes them now, without waiting, and
    // notes in each how much it took.
    void sendEach(std::span<GatheredWrite> writes);

  private:
    SendRing() = default;
    bool open();
    void sendBatch(std::span<GatheredWrite> writes);

    int fd_ = -1;
    unsigned entries_ = 0;
    unsigned* sqHead_ = nullptr;
    unsigned* sqTail_ = nullptr;
    unsigned sqMask_ = 0;
    unsigned* sqArray_ = nullptr;
    unsigned* cqHead_ = nullptr;
    unsigned* cqTail_ = nullptr;
    unsigned cqMask_ = 0;
    io_uring_cqe* cqes_ = nullptr;
    io_uring_sqe* sqes_ = nullptr;
    void* sqRing_ = nullptr;
    void* cqRing_ = nullptr;
    size_t sqRingSize_ = 0;
    size_t cqRingSize_ = 0;
    size_t sqesSize_ = 0;
    // The gathered writes of several pieces go as messages; they must stay put until the
    // batch is done.
    std::vector<msghdr> messages_;
    std::vector<iovec> parts_;
};
