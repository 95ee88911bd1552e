#include "net/GatheredWrite.h"

#if defined(Q_OS_LINUX)
#include "net/SendRing.h"

#include <cerrno>
#include <sys/socket.h>
#include <sys/uio.h>

size_t writeWithoutWaiting(qintptr descriptor, std::span<const std::string_view> pieces) {
    // One call takes a batch of pieces; a connection's pieces are few (its own answers between
    // runs of shared output), so one batch is the usual case.
    constexpr size_t kBatch = 64;
    size_t done = 0;
    size_t next = 0;   // the first piece not wholly taken
    size_t offset = 0; // how much of it was taken
    while (next < pieces.size()) {
        iovec parts[kBatch];
        size_t count = 0;
        size_t asked = 0;
        for (size_t i = next; i < pieces.size() && count < kBatch; ++i, ++count) {
            const size_t skip = i == next ? offset : 0;
            parts[count].iov_base = const_cast<char*>(pieces[i].data() + skip);
            parts[count].iov_len = pieces[i].size() - skip;
            asked += parts[count].iov_len;
        }
        // One piece, the usual case, goes by the plainer call: it is a little cheaper.
        constexpr int kFlags = MSG_DONTWAIT | MSG_NOSIGNAL;
        msghdr message{};
        message.msg_iov = parts;
        message.msg_iovlen = count;
        const ssize_t n =
            count == 1 ? ::send(static_cast<int>(descriptor), parts[0].iov_base, parts[0].iov_len, kFlags)
                       : ::sendmsg(static_cast<int>(descriptor), &message, kFlags);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) break; // full, or failed: the socket's own queue takes the rest and reports any failure
        done += static_cast<size_t>(n);
        for (size_t taken = static_cast<size_t>(n); taken > 0;) {
            const size_t left = pieces[next].size() - offset;
            if (taken < left) {
                offset += taken;
                break;
            }
            taken -= left;
            ++next;
            offset = 0;
        }
        while (next < pieces.size() && pieces[next].size() == offset) { // empty pieces
            ++next;
            offset = 0;
        }
        if (static_cast<size_t>(n) < asked) break; // the system is full for now
    }
    return done;
}

void writeEachWithoutWaiting(std::span<GatheredWrite> writes) {
    // One connection is cheaper by the plain call.
    if (writes.size() > 1) {
        if (SendRing* ring = SendRing::instance()) {
            ring->sendEach(writes);
            return;
        }
    }
    for (GatheredWrite& write : writes)
        write.taken = writeWithoutWaiting(write.descriptor, write.pieces);
}

#else

size_t writeWithoutWaiting(qintptr, std::span<const std::string_view>) {
    return 0;
}

void writeEachWithoutWaiting(std::span<GatheredWrite> writes) {
    for (GatheredWrite& write : writes)
        write.taken = 0;
}

#endif
