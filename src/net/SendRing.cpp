#include "net/SendRing.h"

#if defined(Q_OS_LINUX)
#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <linux/io_uring.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

// Headers older than the kernel that runs the program may lack these; the kernel refuses
// flags it does not know, and the program then goes without the ring.
#ifndef IORING_SETUP_SUBMIT_ALL
#define IORING_SETUP_SUBMIT_ALL (1U << 7)
#endif
#ifndef IORING_SETUP_COOP_TASKRUN
#define IORING_SETUP_COOP_TASKRUN (1U << 8)
#endif

namespace {
// A squadron's connections: 48 AWACS clients and 48 players, so one call per hand-over.
constexpr unsigned kEntries = 128;
constexpr int kFlags = MSG_DONTWAIT | MSG_NOSIGNAL;

int enter(int fd, unsigned toSubmit, unsigned minComplete) {
    return static_cast<int>(
        syscall(__NR_io_uring_enter, fd, toSubmit, minComplete, IORING_ENTER_GETEVENTS, nullptr, 0));
}
} // namespace

SendRing* SendRing::instance() {
    static SendRing* ring = [] {
        auto* opened = new SendRing;
        if (opened->open()) return opened;
        delete opened;
        return static_cast<SendRing*>(nullptr);
    }();
    return ring;
}

bool SendRing::open() {
    io_uring_params params{};
    // One thread submits, and every send completes before the call returns; a kernel that does
    // not know these flags (before 5.19) goes without the ring.
    params.flags = IORING_SETUP_SUBMIT_ALL | IORING_SETUP_COOP_TASKRUN;
    fd_ = static_cast<int>(syscall(__NR_io_uring_setup, kEntries, &params));
    if (fd_ < 0) return false;
    entries_ = params.sq_entries;
    sqRingSize_ = params.sq_off.array + params.sq_entries * sizeof(unsigned);
    cqRingSize_ = params.cq_off.cqes + params.cq_entries * sizeof(io_uring_cqe);
    const bool single = params.features & IORING_FEAT_SINGLE_MMAP;
    if (single) sqRingSize_ = cqRingSize_ = std::max(sqRingSize_, cqRingSize_);
    sqRing_ = mmap(nullptr, sqRingSize_, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_POPULATE, fd_,
                   IORING_OFF_SQ_RING);
    if (sqRing_ == MAP_FAILED) return false;
    cqRing_ = single ? sqRing_
                     : mmap(nullptr, cqRingSize_, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_POPULATE, fd_,
                            IORING_OFF_CQ_RING);
    if (cqRing_ == MAP_FAILED) return false;
    sqesSize_ = params.sq_entries * sizeof(io_uring_sqe);
    void* sqes =
        mmap(nullptr, sqesSize_, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_POPULATE, fd_, IORING_OFF_SQES);
    if (sqes == MAP_FAILED) return false;
    sqes_ = static_cast<io_uring_sqe*>(sqes);
    auto* sq = static_cast<char*>(sqRing_);
    auto* cq = static_cast<char*>(cqRing_);
    sqHead_ = reinterpret_cast<unsigned*>(sq + params.sq_off.head);
    sqTail_ = reinterpret_cast<unsigned*>(sq + params.sq_off.tail);
    sqMask_ = *reinterpret_cast<unsigned*>(sq + params.sq_off.ring_mask);
    sqArray_ = reinterpret_cast<unsigned*>(sq + params.sq_off.array);
    cqHead_ = reinterpret_cast<unsigned*>(cq + params.cq_off.head);
    cqTail_ = reinterpret_cast<unsigned*>(cq + params.cq_off.tail);
    cqMask_ = *reinterpret_cast<unsigned*>(cq + params.cq_off.ring_mask);
    cqes_ = reinterpret_cast<io_uring_cqe*>(cq + params.cq_off.cqes);
    return true;
}

SendRing::~SendRing() {
    if (sqes_) munmap(sqes_, sqesSize_);
    if (cqRing_ && cqRing_ != MAP_FAILED && cqRing_ != sqRing_) munmap(cqRing_, cqRingSize_);
    if (sqRing_ && sqRing_ != MAP_FAILED) munmap(sqRing_, sqRingSize_);
    if (fd_ >= 0) ::close(fd_);
}

void SendRing::sendEach(std::span<GatheredWrite> writes) {
    for (size_t first = 0; first < writes.size(); first += entries_)
        sendBatch(writes.subspan(first, std::min<size_t>(entries_, writes.size() - first)));
}

void SendRing::sendBatch(std::span<GatheredWrite> writes) {
    // The messages' places are fixed before any is pointed at.
    size_t messageCount = 0;
    size_t partCount = 0;
    for (const GatheredWrite& write : writes) {
        if (write.pieces.size() > 1) {
            ++messageCount;
            partCount += std::min<size_t>(write.pieces.size(), IOV_MAX);
        }
    }
    messages_.resize(messageCount);
    parts_.resize(partCount);
    msghdr* message = messages_.data();
    iovec* parts = parts_.data();

    const unsigned tail = *sqTail_; // only this thread moves the tail
    for (size_t i = 0; i < writes.size(); ++i) {
        GatheredWrite& write = writes[i];
        write.taken = 0;
        const unsigned slot = (tail + static_cast<unsigned>(i)) & sqMask_;
        io_uring_sqe& sqe = sqes_[slot];
        std::memset(&sqe, 0, sizeof sqe);
        sqe.fd = static_cast<int>(write.descriptor);
        sqe.msg_flags = kFlags;
        sqe.user_data = i;
        if (write.pieces.size() == 1) {
            sqe.opcode = IORING_OP_SEND;
            sqe.addr = reinterpret_cast<__u64>(write.pieces[0].data());
            sqe.len = static_cast<__u32>(write.pieces[0].size());
        } else {
            // What does not fit in one message's parts joins the socket's queue.
            const size_t used = std::min<size_t>(write.pieces.size(), IOV_MAX);
            for (size_t p = 0; p < used; ++p) {
                parts[p].iov_base = const_cast<char*>(write.pieces[p].data());
                parts[p].iov_len = write.pieces[p].size();
            }
            *message = msghdr{};
            message->msg_iov = parts;
            message->msg_iovlen = used;
            sqe.opcode = IORING_OP_SENDMSG;
            sqe.addr = reinterpret_cast<__u64>(message);
            sqe.len = 1;
            ++message;
            parts += used;
        }
        sqArray_[slot] = slot;
    }
    const unsigned count = static_cast<unsigned>(writes.size());
    __atomic_store_n(sqTail_, tail + count, __ATOMIC_RELEASE);
    while (enter(fd_, count, count) < 0 && errno == EINTR) {
    }
    // The kernel takes all or, when it fails (out of memory), none; those it left are
    // withdrawn and sent one by one.
    const unsigned taken = __atomic_load_n(sqHead_, __ATOMIC_ACQUIRE) - tail;
    if (taken < count) *sqTail_ = tail + taken;
    // Every send was made without waiting, so each has completed by now; the loop only guards
    // against a wait cut short by a signal.
    for (unsigned reaped = 0; reaped < taken;) {
        unsigned head = *cqHead_;
        const unsigned ready = __atomic_load_n(cqTail_, __ATOMIC_ACQUIRE);
        for (; head != ready; ++head, ++reaped) {
            const io_uring_cqe& cqe = cqes_[head & cqMask_];
            if (cqe.user_data < count && cqe.res > 0)
                writes[cqe.user_data].taken = static_cast<size_t>(cqe.res);
        }
        __atomic_store_n(cqHead_, head, __ATOMIC_RELEASE);
        if (reaped < taken) enter(fd_, 0, taken - reaped);
    }
    for (GatheredWrite& write : writes.subspan(taken))
        write.taken = writeWithoutWaiting(write.descriptor, write.pieces);
}

#endif
