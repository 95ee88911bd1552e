// Clients that connect and go again at once while the real executable starts: before its loop
// runs, while its first window comes up, and just after. A connection the server does not see
// go keeps a player's slot, an AWACS or SIM client's slot, or the AI Spy link, so each must be
// let go within a second on every port, whether its client closed it or reset it.
#include "RealServer.h"

#include <gtest/gtest.h>

namespace {

constexpr quint16 kPorts[] = {5554, 5555, 5556, 5557};

// Connects and leaves at once with a close or a reset; false while nothing listens there.
bool connectAndLeave(quint16 port, bool reset) {
    QTcpSocket socket;
    socket.connectToHost(QHostAddress::LocalHost, port);
    if (!socket.waitForConnected(1000)) return false;
    if (reset)
        resetConnection(socket);
    else
        socket.disconnectFromHost();
    return true;
}

// What a peer heard, less the keep-alive every peer gets every 10 seconds.
std::vector<std::string> apartFromKeepAlive(std::vector<std::string> texts) {
    std::erase(texts, "SYNCRO");
    return texts;
}

// The lines of the operator's status that list connections.
std::string connectionsIn(const std::string& status) {
    const std::string heading = "Connections:\n";
    const size_t at = status.find(heading);
    return at == std::string::npos ? status : status.substr(at + heading.size());
}

} // namespace

TEST(RealServer, ClientsThatCloseOrResetAroundStartUpAreLetGoWithinASecondOnEveryPort) {
    RealServer server;
    QProcess process;
    server.start(process, true); // with its window, as on Windows always
    // Every port in turn from the start, until the AI Spy's, which opens last, takes one...
    int cycles = 0;
    bool aiSpyListens = false;
    QElapsedTimer clock;
    clock.start();
    while (!aiSpyListens && clock.elapsed() < 20000) {
        const int before = cycles;
        for (quint16 port : kPorts)
            if (connectAndLeave(port, cycles % 2 == 1)) {
                ++cycles;
                aiSpyListens = aiSpyListens || port == 5554;
            }
        if (cycles == before) pumpFor(2ms); // nothing listens yet
    }
    ASSERT_TRUE(aiSpyListens);
    // ...then hundreds more while the event loop starts and the window comes up.
    for (int round = 0; round < 100; ++round)
        for (quint16 port : kPorts)
            cycles += connectAndLeave(port, round % 2 == 1) ? 1 : 0;

    pumpFor(1000ms);
    const Answer status = server.answer({"status"});
    ASSERT_EQ(status.status, 0) << status.err;
    const std::string held = connectionsIn(status.out);
    EXPECT_TRUE(held.empty()) << std::count(held.begin(), held.end(), '\n') << " of " << cycles
                              << " connections are still held, the first:\n"
                              << held.substr(0, held.find('\n'));
    EXPECT_NE(status.out.find("AI Spy: not connected"), std::string::npos);

    // Those who come to stay find the link and the slots free, and hear nothing of the others.
    auto aiSpy = RealServer::connectAiSpy();
    ASSERT_TRUE(aiSpy);
    Peer player(5555);
    player.send("VALIDR", "Viper");
    EXPECT_EQ(player.takeTexts(1), std::vector<std::string>{"PLSNEW1@Viper@@-"});
    EXPECT_EQ(apartFromKeepAlive(player.settle(300ms)), std::vector<std::string>{});

    EXPECT_EQ(server.answer({"exit"}).status, 0);
    ASSERT_TRUE(hasEnded(process));
    EXPECT_EQ(apartFromKeepAlive(aiSpy->settle()), std::vector<std::string>{"CLOSE1"});
    EXPECT_EQ(apartFromKeepAlive(player.settle()), std::vector<std::string>{"DISCON"});
}
