// What the SIM and AWACS channels do with bad input and misbehaving clients: skipped
// statements and silence, never a crash, a stall or another client's data lost.
#include "RelayPeers.h"

#include <QTcpSocket>

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace {

class RelayBadInput : public RelayTest {};

TEST_F(RelayBadInput, BadSimReportsRelayNothingWhileLoggingIsOff) {
    auto awacs = registeredAwacs();
    auto sim = announcedSim("VIPER", 2);
    sendAndSettle(*sim, "ADDAIR", "1");
    EXPECT_THAT(awacs->takeAllTexts(), ElementsAre("NEWCLT1@VIPER1"));

    for (const char* payload : {"1", "one@pos", "3@pos", "-1@pos", "99999999999@pos", "", "@"})
        sendAndSettle(*sim, "SIMLOC", payload);
    sendAndSettle(*sim, "SIMNEW", "NEGATIVE@-3");
    sendAndSettle(*sim, "XXXXXX", "ignored");
    EXPECT_THAT(awacs->takeAllTexts(), IsEmpty());
    // A place outside the simulator's places: the number is taken and announced all the same,
    // though the simulator's record never learns it.
    sendAndSettle(*sim, "ADDAIR", "7");
    EXPECT_THAT(awacs->takeAllTexts(), ElementsAre("NEWCLT2@VIPER2"));
    EXPECT_TRUE(server().players().PlayerSlotUsed()[2]);

    // An empty place is still reported gone, as number 0.
    sendAndSettle(*sim, "DELAIR", "2");
    EXPECT_THAT(awacs->takeAllTexts(), ElementsAre("DELCLT0"));
    // The simulator still works afterwards.
    sendAndSettle(*sim, "SIMLOC", "1@ok");
    EXPECT_THAT(awacs->takeAllTexts(), ElementsAre("INDATA1@ok"));
    EXPECT_EQ(ts_.endsOfProgram(), 0);
}

TEST_F(RelayBadInput, AllAirplaneNumbersTakenStoresNothingAndAnnouncesNothing) {
    auto awacs = registeredAwacs();
    auto sim = announcedSim("SWARM", 50);
    for (int place = 1; place <= 48; ++place)
        sim->send("ADDAIR", std::to_string(place));
    ASSERT_TRUE(awacs->waitFor(48));
    EXPECT_EQ(awacs->takeAllTexts().back(), "NEWCLT48@SWARM48");
    sendAndSettle(*sim, "ADDAIR", "49");
    EXPECT_THAT(awacs->takeAllTexts(), IsEmpty());
    EXPECT_EQ(server().sims().SimList()[1].Planes[49], 0);
    // A player connection now finds no slot.
    EXPECT_TRUE(turnedAway(ts_.playerPort()));
}

class RelayBadInputLogged : public RelayTest {
  protected:
    RelayBadInputLogged() : RelayTest("[SETUPLIST]\r\nNUM=0\r\n[DEBUG]\r\nLOG=1\r\n") {}
};

TEST_F(RelayBadInputLogged, BadPlaceIsWrittenToTheErrorLogAndArrivalsToTheTrafficLog) {
    auto awacs = registeredAwacs();
    auto sim = announcedSim("VIPER", 2);
    sendAndSettle(*sim, "SIMLOC", "one@pos");
    EXPECT_EQ(ts_.endsOfProgram(), 1);
    EXPECT_THAT(ts_.readFile("TessarkSrvErrorLog.txt"),
                HasSubstr("Error at TskSrvForm1::SendToAwacsClients2 - Error: 13 - Type mismatch\r\n"));
    sendAndSettle(*sim, "NOTONE", "x");
    server().trafficLog().flush();
    const std::string traffic = ts_.readFile("TessarkSrvLog.txt");
    EXPECT_THAT(traffic, HasSubstr(" : Command arrived from AWACS Client #1: (NAWACS)"));
    EXPECT_THAT(traffic, HasSubstr(" : Command arrived from SIM Client #1: (SIMNEW)VIPER@2"));
    EXPECT_THAT(traffic, HasSubstr(" : Command arrived from SIM Client #1: (SIMLOC)one@pos"));
    EXPECT_THAT(traffic, ::testing::Not(HasSubstr("NOTONE")));
}

TEST_F(RelayBadInput, AwacsClientWithASocketErrorIsClosedButStaysListed) {
    auto failing = registeredAwacs(); // slot 1
    auto healthy = registeredAwacs(); // slot 2
    auto sim = announcedSim("VIPER", 1);
    sendAndSettle(*sim, "ADDAIR", "1");
    failing->takeAllTexts();
    healthy->takeAllTexts();

    emit server().WS2().element(1).error(1, 40010, "Connection reset");
    EXPECT_TRUE(failing->waitForDisconnect());
    EXPECT_EQ(awacsListed(), 2);
    EXPECT_EQ(ts_.display().awacsCount, "2");
    sendAndSettle(*sim, "SIMLOC", "1@still relayed");
    EXPECT_THAT(healthy->takeAllTexts(), ElementsAre("INDATA1@still relayed"));
    EXPECT_EQ(ts_.endsOfProgram(), 0);
}

TEST_F(RelayBadInput, AwacsClientThatNeverReadsDoesNotHoldUpTheOthers) {
    // A client whose program stopped reading: the kernel buffers fill, then the server's
    // queue for it reaches its cap and further messages to it are dropped.
    QTcpSocket stalled;
    stalled.setReadBufferSize(1);
    stalled.connectToHost(QHostAddress::LocalHost, ts_.awacsPort());
    ASSERT_TRUE(pumpUntil([&] { return stalled.state() == QAbstractSocket::ConnectedState; }));
    pumpFor(20ms);
    stalled.write(QByteArray("NAWACS", 7));
    ASSERT_TRUE(pumpUntil([&] { return awacsListed() == 1; }));
    auto healthy = registeredAwacs();
    auto sim = announcedSim("VIPER", 1);
    sendAndSettle(*sim, "ADDAIR", "1");
    healthy->takeAllTexts();

    // Each report carries its number, so what arrives can be checked for order and wholeness.
    const std::string padding(4000, 'p');
    auto report = [&](int n) { return "1@" + std::to_string(n) + ":" + padding; };
    size_t delivered = 0;
    for (int i = 0; i < 6000; ++i) {
        sim->send("SIMLOC", report(i));
        if (i % 50 == 49) {
            pumpFor(2ms);
            delivered += healthy->takeAllTexts().size();
        }
    }
    sendAndSettle(*sim, "SIMLOC", "1@last");
    ASSERT_TRUE(pumpUntil(
        [&] {
            if (healthy->inbox().empty()) return false;
            return healthy->inbox().back().data == "1@last";
        },
        10000ms));
    delivered += healthy->takeAllTexts().size();

    // 24 MB went out to the healthy client; reports split across two reads are lost by
    // design, so most (not all) arrive.
    EXPECT_GT(delivered, 3000u);
    EXPECT_LE(server().WS2().element(1).bytesQueued(), SocketElement::kOutputCap);
    EXPECT_GT(server().WS2().element(1).bytesQueued(), SocketElement::kOutputCap / 2);
    EXPECT_EQ(awacsListed(), 2);

    // When the client reads again it gets what was queued for it, in order and whole, and
    // then the reports that came after.
    stalled.setReadBufferSize(0);
    QByteArray received;
    sendAndSettle(*sim, "SIMLOC", "1@final");
    ASSERT_TRUE(pumpUntil(
        [&] {
            received += stalled.readAll();
            return received.endsWith(QByteArray("INDATA1@final", 14));
        },
        10000ms));
    int previous = -1;
    for (const QByteArray& message : received.split('\0')) {
        if (message.isEmpty() || message.startsWith("NEWCLT") || !message.contains(':')) continue;
        ASSERT_TRUE(message.startsWith("INDATA1@")) << message.left(40).toStdString();
        const int n = message.mid(8, message.indexOf(':') - 8).toInt();
        EXPECT_GT(n, previous);
        EXPECT_EQ(message.size(), static_cast<qsizetype>(report(n).size() + 6));
        previous = n;
    }
    EXPECT_GT(previous, 0);
    EXPECT_EQ(ts_.endsOfProgram(), 0);
}

} // namespace
