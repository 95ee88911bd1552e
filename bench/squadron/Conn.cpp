#include "Conn.h"

#include <arpa/inet.h>
#include <netinet/tcp.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace {
in_addr spreadFirst{};
int spreadCount = 0;
int spreadNext = 0;
constexpr size_t kReadChunk = 64 * 1024;
constexpr size_t kInputCap = 16 * 1024 * 1024; // a "message" longer than this is thrown away
} // namespace

Conn::~Conn() {
    close();
}

void Conn::spreadSources(const in_addr& first, int count) {
    spreadFirst = first;
    spreadCount = count;
}

bool Conn::open(const sockaddr_in& address, int receiveBuffer) {
    close();
    fd_ = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (fd_ < 0) return false;
    if (receiveBuffer > 0) setsockopt(fd_, SOL_SOCKET, SO_RCVBUF, &receiveBuffer, sizeof receiveBuffer);
    if (maxSegment_ > 0) setsockopt(fd_, IPPROTO_TCP, TCP_MAXSEG, &maxSegment_, sizeof maxSegment_);
    int one = 1;
    setsockopt(fd_, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
    if (hasSource_ || spreadCount > 0) {
        sockaddr_in from{};
        from.sin_family = AF_INET;
        from.sin_addr = source_;
        if (!hasSource_) {
            from.sin_addr.s_addr = htonl(ntohl(spreadFirst.s_addr) + uint32_t(spreadNext));
            spreadNext = (spreadNext + 1) % spreadCount;
        }
        if (bind(fd_, reinterpret_cast<const sockaddr*>(&from), sizeof from) != 0) {
            ::close(fd_);
            fd_ = -1;
            return false;
        }
    }
    int r = connect(fd_, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    if (r < 0 && errno != EINPROGRESS) {
        ::close(fd_);
        fd_ = -1;
        return false;
    }
    connected_ = r == 0;
    interest_ = connected_ ? uint32_t(EPOLLIN | EPOLLRDHUP) : uint32_t(EPOLLOUT);
    loop_.watch(fd_, interest_, this);
    if (connected_ && cb_.connected) cb_.connected();
    return true;
}

void Conn::close() {
    if (fd_ < 0) return;
    loop_.forget(fd_);
    ::close(fd_);
    fd_ = -1;
    connected_ = false;
    out_.clear();
    outOffset_ = 0;
    queued_ = written_ = 0;
    pending_.clear();
    in_.clear();
    reading_ = true;
    shutdownPending_ = false;
}

void Conn::shutdownWrite() {
    if (fd_ < 0) return;
    shutdownPending_ = true;
    if (connected_) flush();
}

void Conn::pull(size_t maxBytes) {
    if (fd_ >= 0 && connected_ && maxBytes > 0) readSome(maxBytes);
}

void Conn::fail() {
    close();
    if (cb_.closed) cb_.closed();
}

void Conn::send(std::string_view msg, SendTag tag) {
    if (fd_ < 0) return;
    pending_.push_back(Pending{queued_, queued_ + msg.size(), tag});
    queued_ += msg.size();
    out_.append(msg);
    if (connected_) flush();
}

void Conn::setReading(bool on) {
    reading_ = on;
    updateInterest();
}

void Conn::updateInterest() {
    if (fd_ < 0 || !connected_) return;
    uint32_t want = EPOLLRDHUP;
    if (reading_) want |= EPOLLIN;
    if (queued_ > written_) want |= EPOLLOUT;
    if (want != interest_) {
        interest_ = want;
        loop_.change(fd_, interest_, this);
    }
}

void Conn::flush() {
    while (fd_ >= 0 && written_ < queued_) {
        // End the piece on the last message boundary within the chunk (or cut a message that
        // is itself bigger than a chunk).
        uint64_t limit = written_ + writeChunk_;
        uint64_t end = 0;
        for (const Pending& p : pending_) {
            if (p.end <= written_) continue;
            if (p.end > limit) break;
            end = p.end;
        }
        if (end == 0) end = std::min(limit, queued_);
        ssize_t n = ::write(fd_, out_.data() + outOffset_, size_t(end - written_));
        if (n < 0) {
            if (errno == EAGAIN || errno == EINTR) break;
            fail();
            return;
        }
        written_ += uint64_t(n);
        outOffset_ += size_t(n);
        while (!pending_.empty() && pending_.front().end <= written_)
            pending_.pop_front();
        if (!pending_.empty() && pending_.front().start < written_ &&
            uint64_t(n) < end - (written_ - uint64_t(n))) {
            // The kernel took part of the piece: the message now straddling the boundary
            // reaches the server in two parts.
            const SendTag tag = pending_.front().tag;
            if (tag.kind != SendTag::None && cb_.split) cb_.split(tag);
            break;
        }
    }
    if (outOffset_ > (1u << 20) && outOffset_ * 2 > out_.size()) {
        out_.erase(0, outOffset_);
        outOffset_ = 0;
    }
    if (written_ == queued_) {
        out_.clear();
        outOffset_ = 0;
        if (shutdownPending_ && fd_ >= 0) {
            shutdownPending_ = false;
            ::shutdown(fd_, SHUT_WR);
        }
    }
    updateInterest();
}

void Conn::readSome(size_t maxBytes) {
    char buf[kReadChunk];
    ssize_t n = ::read(fd_, buf, std::min(sizeof buf, maxBytes));
    if (n == 0 || (n < 0 && errno != EAGAIN && errno != EINTR)) {
        fail();
        return;
    }
    if (n < 0) return;
    bytesRead_ += uint64_t(n);
    in_.append(buf, size_t(n));
    size_t start = 0;
    for (;;) {
        const void* z = std::memchr(in_.data() + start, 0, in_.size() - start);
        if (!z) break;
        size_t end = size_t(static_cast<const char*>(z) - in_.data());
        if (cb_.message) cb_.message(std::string_view(in_.data() + start, end - start));
        if (fd_ < 0) return; // the handler closed us
        start = end + 1;
    }
    in_.erase(0, start);
    if (in_.size() > kInputCap) in_.clear();
}

void Conn::onEvents(uint32_t events) {
    if (fd_ < 0) return;
    if (!connected_) {
        int err = 0;
        socklen_t len = sizeof err;
        getsockopt(fd_, SOL_SOCKET, SO_ERROR, &err, &len);
        if (err || (events & (EPOLLERR | EPOLLHUP))) {
            fail();
            return;
        }
        connected_ = true;
        interest_ = 0;
        updateInterest();
        if (cb_.connected) cb_.connected();
        if (fd_ >= 0 && written_ < queued_) flush();
        return;
    }
    if ((events & EPOLLIN) && reading_) readSome(kReadChunk);
    if (fd_ < 0) return;
    if (events & EPOLLOUT) flush();
    if (fd_ < 0) return;
    // With input still waiting, the reads above reach the end of the stream first.
    if ((events & EPOLLERR) || ((events & (EPOLLHUP | EPOLLRDHUP)) && !(events & EPOLLIN))) fail();
}
