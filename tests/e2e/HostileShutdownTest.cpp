// Leaving under pressure: a shutdown with a peer that reads nothing, connections closed while
// they still hold output, an error log that cannot be written, and peers whose machine
// vanished without a word.
#include "HostilePeers.h"
#include "RelayPeers.h"

#include <QDir>
#include <gmock/gmock.h>

#if defined(Q_OS_LINUX)
#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>
#endif

namespace {

class HostileShutdown : public RelayTest {};

// Enough for a few megabytes of answer per ERRGET.
QByteArray errorListRequests(int errgets) {
    return batch({"VALIDRX", "ERRRDM32767"}) + repeated("ERRGET1", errgets);
}

TEST_F(HostileShutdown, APeerThatReadsNothingDoesNotKeepTheOthersFromTheirDiscon) {
    // Under a sanitizer the stalled peer's answers take seconds: no keep-alive may come first.
    server().keepAliveTimer().stop();
    Peer player(ts_.playerPort());
    auto awacs = registeredAwacs();
    auto sim = announcedSim("VIPER", 1);
    NonReader stalled(ts_.playerPort());
    stalled.send(errorListRequests(40));
    pumpFor(300ms);
    player.takeAllTexts();
    awacs->takeAllTexts();
    sim->takeAllTexts();

    server().exit();
    for (Peer* peer : {&player, awacs.get(), sim.get()})
        EXPECT_THAT(peer->takeTexts(1), testing::ElementsAre("DISCON"));
    EXPECT_EQ(ts_.endsOfProgram(), 0);
    server().exit(); // a second request finds the work done
}

#if defined(Q_OS_LINUX)
int openDescriptors() {
    return static_cast<int>(QDir("/proc/self/fd").entryList(QDir::NoDotAndDotDot).size());
}

// A raw connection with the smallest window and segments: the system takes little of what the
// server sends off its hands, so an answer left unread stays queued at the server.
int narrowConnection(quint16 port) {
    const int s = ::socket(AF_INET, SOCK_STREAM, 0);
    const int window = 4096, segment = 88;
    setsockopt(s, SOL_SOCKET, SO_RCVBUF, &window, sizeof window);
    setsockopt(s, IPPROTO_TCP, TCP_MAXSEG, &segment, sizeof segment);
    sockaddr_in to{};
    to.sin_family = AF_INET;
    to.sin_port = htons(port);
    to.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    ::connect(s, reinterpret_cast<sockaddr*>(&to), sizeof to);
    return s;
}

TEST_F(HostileShutdown, ConnectionsClosedWhileStillSendingAreBounded) {
    constexpr int kPeers = 100;
    const int before = openDescriptors();
    std::vector<int> peers;
    for (int i = 0; i < kPeers; ++i) {
        // Asks for half a megabyte, reads none of it, and leaves with VALEND: the server closes
        // its side with the answer still queued.
        const int s = narrowConnection(ts_.playerPort());
        const QByteArray request = errorListRequests(1) + batch({"VALEND"});
        ASSERT_EQ(::write(s, request.constData(), static_cast<size_t>(request.size())), request.size());
        pumpFor(20ms);
        ASSERT_TRUE(
            pumpUntil([&] { return server().playerChannel().sockets().loadedIndices().empty(); }, 10s));
        peers.push_back(s);
    }
    pumpFor(100ms);
    // The test's own connections, and at most the cap of closed ones still sending.
    EXPECT_LE(openDescriptors() - before, kPeers + 64 + 8);
    for (int s : peers)
        ::close(s);
}

TEST_F(HostileShutdown, AConnectionWhosePeerVanishesIsGivenUpWithinAMinute) {
    Peer player(ts_.playerPort());
    const int s = static_cast<int>(server().playerChannel().sockets().element(1).descriptor());
    int keepAlive = 0;
    unsigned int userTimeout = 0;
    socklen_t size = sizeof keepAlive;
    getsockopt(s, SOL_SOCKET, SO_KEEPALIVE, &keepAlive, &size);
    size = sizeof userTimeout;
    getsockopt(s, IPPROTO_TCP, TCP_USER_TIMEOUT, &userTimeout, &size);
    EXPECT_EQ(keepAlive, 1);
    EXPECT_GT(userTimeout, 0u);
    EXPECT_LE(userTimeout, 60000u);
}
#endif

class LoggingOn : public RelayTest {
  protected:
    LoggingOn() : RelayTest(kIniLogOn) {}
};

TEST_F(LoggingOn, AnErrorLogThatCannotBeWrittenShowsTheRunTimeErrorAndEnds) {
    ASSERT_TRUE(QDir().mkdir(ts_.path("TessarkSrvErrorLog.txt"))); // a directory in its place
    Peer player(ts_.playerPort());
    player.sendRaw(QByteArray(1, '\0'));
    ASSERT_TRUE(pumpUntil([&] { return ts_.endsOfProgram() > 0; }));
    EXPECT_THAT(ts_.display().messageBoxes,
                testing::Contains(QString("Tessark Server|Run-time error '75':\n\nPath/File access error")));
}

} // namespace
