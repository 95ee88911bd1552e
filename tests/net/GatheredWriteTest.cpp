// A hand-over to many connections: each gets its own pieces in order, as far as it has room,
// whether the sends go in one call through the ring or one call per connection.
#include "net/GatheredWrite.h"

#if defined(Q_OS_LINUX)
#include "net/SendRing.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <functional>
#include <iostream>
#include <string>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

namespace {

struct Pair {
    int near = -1;
    int far = -1;
};

Pair socketPair(int sendBuffer = 0) {
    int fds[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0, fds) != 0) return {};
    if (sendBuffer > 0) ::setsockopt(fds[0], SOL_SOCKET, SO_SNDBUF, &sendBuffer, sizeof sendBuffer);
    return {fds[0], fds[1]};
}

std::string drain(int fd) {
    std::string got;
    char buffer[65536];
    for (ssize_t n; (n = ::read(fd, buffer, sizeof buffer)) > 0;)
        got.append(buffer, static_cast<size_t>(n));
    return got;
}

// Fills the connection until the system takes no more.
void fill(int fd) {
    const std::string block(4096, 'x');
    while (::send(fd, block.data(), block.size(), MSG_DONTWAIT) > 0) {
    }
}

using Way = std::function<void(std::span<GatheredWrite>)>;

std::vector<std::pair<const char*, Way>> ways() {
    std::vector<std::pair<const char*, Way>> all{{"one by one", [](std::span<GatheredWrite> writes) {
                                                      for (GatheredWrite& write : writes)
                                                          write.taken = writeWithoutWaiting(write.descriptor,
                                                                                            write.pieces);
                                                  }}};
    if (SendRing* ring = SendRing::instance())
        all.push_back({"ring", [ring](std::span<GatheredWrite> writes) { ring->sendEach(writes); }});
    else // the product goes without it too
        std::cerr << "no submission ring on this system: only the plain sends were tried\n";
    return all;
}

TEST(GatheredWrite, EveryConnectionGetsItsOwnPiecesInOrder) {
    // More connections than one call of the ring takes, with one to three pieces each.
    constexpr int kConnections = 150;
    for (const auto& [name, deliver] : ways()) {
        SCOPED_TRACE(name);
        std::vector<Pair> pairs;
        std::vector<std::vector<std::string>> texts(kConnections);
        std::vector<std::vector<std::string_view>> views(kConnections);
        std::vector<GatheredWrite> writes;
        for (int i = 0; i < kConnections; ++i) {
            pairs.push_back(socketPair());
            ASSERT_GE(pairs.back().near, 0);
            for (int p = 0; p <= i % 3; ++p)
                texts[i].push_back("INDATA" + std::to_string(i) + "@" + std::string(p + 1, 'a' + p) + '\0');
            for (const std::string& text : texts[i])
                views[i].push_back(text);
            writes.push_back({pairs.back().near, views[i]});
        }
        deliver(writes);
        for (int i = 0; i < kConnections; ++i) {
            std::string expected;
            for (const std::string& text : texts[i])
                expected += text;
            EXPECT_EQ(writes[i].taken, expected.size()) << i;
            EXPECT_EQ(drain(pairs[i].far), expected) << i;
            ::close(pairs[i].near);
            ::close(pairs[i].far);
        }
    }
}

TEST(GatheredWrite, AFullOrBrokenConnectionTakesWhatItCanAndTheOthersAll) {
    for (const auto& [name, deliver] : ways()) {
        SCOPED_TRACE(name);
        Pair full = socketPair(4096);
        Pair partly = socketPair(4096);
        Pair roomy = socketPair();
        const int notASocket = ::open("/dev/null", O_WRONLY);
        fill(full.near);
        fill(partly.near);
        drain(partly.far); // room for some, not for all of a large message
        const std::string big(1 << 20, 'b');
        const std::string small = std::string("SYNCRO") + '\0';
        const std::string_view bigView = big;
        const std::string_view smallViews[] = {small, small};
        std::vector<GatheredWrite> writes{{full.near, {&bigView, 1}},
                                          {notASocket, {&bigView, 1}},
                                          {partly.near, {&bigView, 1}},
                                          {roomy.near, smallViews}};
        deliver(writes);
        EXPECT_EQ(writes[0].taken, 0u);
        EXPECT_EQ(writes[1].taken, 0u);
        EXPECT_GT(writes[2].taken, 0u);
        EXPECT_LT(writes[2].taken, big.size());
        EXPECT_EQ(writes[3].taken, 2 * small.size());
        // What a connection took is exactly what its peer reads, from the start of the bytes.
        const std::string partlyGot = drain(partly.far);
        EXPECT_EQ(partlyGot, big.substr(0, writes[2].taken));
        EXPECT_EQ(drain(roomy.far), small + small);
        for (int fd : {full.near, full.far, partly.near, partly.far, roomy.near, roomy.far, notASocket})
            ::close(fd);
    }
}

} // namespace

#endif
