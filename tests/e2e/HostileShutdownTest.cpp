// Leaving under pressure: a shutdown with a peer that reads nothing, connections closed while
// they still hold output, an error log that cannot be written, and peers whose machine
// vanished without a word.
#include "HostilePeers.h"
#include "RelayPeers.h"

#include <QDir>
#include <gmock/gmock.h>

#if defined(Q_OS_LINUX)
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#endif

namespace {

class HostileShutdown : public RelayTest {};

// Enough for a few megabytes of answer per ERRGET.
QByteArray errorListRequests(int errgets) {
    return batch({"VALIDRX", "ERRRDM32767"}) + repeated("ERRGET1", errgets);
}

TEST_F(HostileShutdown, APeerThatReadsNothingDoesNotKeepTheOthersFromTheirDiscon) {
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

TEST_F(HostileShutdown, ConnectionsClosedWhileStillSendingAreBounded) {
    constexpr int kPeers = 100;
    const int before = openDescriptors();
    std::vector<std::unique_ptr<NonReader>> peers;
    for (int i = 0; i < kPeers; ++i) {
        // Asks for megabytes, reads none of it, and leaves with VALEND: the server closes its
        // side with the answer still queued.
        auto peer = std::make_unique<NonReader>(ts_.playerPort());
        peer->send(errorListRequests(6) + batch({"VALEND"}));
        ASSERT_TRUE(pumpUntil([&] { return server().players().Players().ubound() == 0; }, 10s));
        peers.push_back(std::move(peer));
    }
    pumpFor(100ms);
    // The test's own connections, and at most the cap of closed ones still sending.
    EXPECT_LE(openDescriptors() - before, kPeers + 64 + 8);
}

TEST_F(HostileShutdown, AConnectionWhosePeerVanishesIsGivenUpWithinAMinute) {
    Peer player(ts_.playerPort());
    const int s = static_cast<int>(server().WS1().element(1).descriptor());
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
