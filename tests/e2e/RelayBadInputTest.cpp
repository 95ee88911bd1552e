// What the SIM and AWACS channels do with bad input and misbehaving clients: skipped
// statements and silence, never a crash, a stall or another client's data lost.
#include "RelayPeers.h"

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace {

class RelayBadInput : public RelayTest {};

TEST_F(RelayBadInput, BadSimReportsRelayNothingAndAnAwacsClientWithASocketErrorIsClosedButStaysListed) {
    auto awacs = registeredAwacs();
    auto sim = announcedSim("VIPER", 2);
    sendAndSettle(*sim, "ADDAIR", "1");
    EXPECT_THAT(awacs->takeAllTexts(), ElementsAre("NEWCLT1@VIPER1"));

    for (const char* payload : {"1", "one@pos", "3@pos", "-1@pos", ""})
        sendAndSettle(*sim, "SIMLOC", payload);
    sendAndSettle(*sim, "SIMNEW", "NEGATIVE@-3");
    sendAndSettle(*sim, "XXXXXX", "ignored");
    EXPECT_THAT(awacs->takeAllTexts(), IsEmpty());
    // A place outside the simulator's places: the number is taken and announced all the same,
    // though the simulator's record never learns it.
    sendAndSettle(*sim, "ADDAIR", "7");
    EXPECT_THAT(awacs->takeAllTexts(), ElementsAre("NEWCLT2@VIPER2"));
    EXPECT_TRUE(server().playerNumbers()[2]);

    // An empty place is still reported gone, as number 0.
    sendAndSettle(*sim, "DELAIR", "2");
    EXPECT_THAT(awacs->takeAllTexts(), ElementsAre("DELCLT0"));
    // The simulator still works afterwards.
    sendAndSettle(*sim, "SIMLOC", "1@ok");
    EXPECT_THAT(awacs->takeAllTexts(), ElementsAre("INDATA1@ok"));

    // A socket error closes the client on slot 1, which stays listed; slot 2 is still served.
    auto healthy = registeredAwacs();
    healthy->settle();
    emit server().awacsChannel().sockets().element(1).error(1, 40010, "Connection reset");
    EXPECT_TRUE(awacs->waitForDisconnect());
    EXPECT_EQ(awacsListed(), 2);
    EXPECT_EQ(ts_.display().awacsCount, "2");
    sendAndSettle(*sim, "SIMLOC", "1@still relayed");
    EXPECT_THAT(healthy->takeAllTexts(), ElementsAre("INDATA1@still relayed"));
    EXPECT_EQ(ts_.endsOfProgram(), 0);
}

class RelayBadInputLogged : public RelayTest {
  protected:
    RelayBadInputLogged() : RelayTest(kIniLogOn) {}
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
    EXPECT_THAT(traffic, HasSubstr(" : Command arrived from SIM Client #1: (SIMNEW)VIPER@2"));
    EXPECT_THAT(traffic, HasSubstr(" : Command arrived from SIM Client #1: (SIMLOC)one@pos"));
    EXPECT_THAT(traffic, ::testing::Not(HasSubstr("NOTONE")));
}

} // namespace
