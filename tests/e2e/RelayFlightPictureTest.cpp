// A whole flight picture over loopback: simulators with airplanes, AWACS clients that come
// and go, and positions from both sources.
#include "RelayPeers.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

class RelayFlightPicture : public RelayTest {};

TEST_F(RelayFlightPicture, NewAwacsClientSeesPlayersThenAirplanesThenPositionsAndRemovals) {
    // A connected player holds slot 1, so the airplanes are numbered from 2.
    Peer player(ts_.playerPort());
    ASSERT_TRUE(server().playerNumbers()[1]);
    player.send("VALIDR", "Maverick");
    EXPECT_THAT(player.takeTexts(1), ElementsAre("PLSNEW1@Maverick@@-"));

    auto viper = announcedSim("VIPER", 4); // SIM slot 1, position 1
    auto eagle = announcedSim("EAGLE", 2); // SIM slot 2, position 2
    EXPECT_EQ(ts_.display().simCount, "2");
    sendAndSettle(*viper, "ADDAIR", "3");   // airplane 2
    sendAndSettle(*eagle, "ADDAIR", "1");   // airplane 3
    sendAndSettle(*viper, "ADDAIR", "1@x"); // airplane 4: only the leading number counts
    EXPECT_THAT(player.takeTexts(2), ElementsAre("SIMNUM1", "SIMNUM2"));

    auto awacs = registeredAwacs();
    EXPECT_EQ(ts_.display().awacsCount, "1");
    EXPECT_THAT(player.takeTexts(1), ElementsAre("AWANUM1"));
    // Players first, then each simulator's airplanes in place order.
    EXPECT_THAT(awacs->takeTexts(4),
                ElementsAre("NEWCLT1@Maverick", "NEWCLT4@VIPER4", "NEWCLT2@VIPER2", "NEWCLT3@EAGLE3"));

    // Only the second field of a SIMLOC goes on, under the airplane number.
    sendAndSettle(*viper, "SIMLOC", "3@N45E007 FL350@ignored");
    sendAndSettle(*eagle, "SIMLOC", "1@S12W077");
    sendAndSettle(*eagle, "SIMLOC", "2@empty place"); // no airplane there: nothing
    // A player's position goes on whole, under its slot.
    player.send("F4LOCA", "x@y");
    EXPECT_THAT(awacs->takeTexts(3), ElementsAre("INDATA2@N45E007 FL350", "INDATA3@S12W077", "INDATA1@x@y"));

    // A new airplane is announced to the listed client at once.
    sendAndSettle(*eagle, "ADDAIR", "2");
    EXPECT_THAT(awacs->takeAllTexts(), ElementsAre("NEWCLT5@EAGLE5"));

    // Airplanes vanish with DELCLT and their numbers are free again.
    sendAndSettle(*viper, "DELAIR", "3");
    EXPECT_THAT(awacs->takeAllTexts(), ElementsAre("DELCLT2"));
    EXPECT_FALSE(server().playerNumbers()[2]);
    sendAndSettle(*eagle, "SIMEND");
    EXPECT_THAT(awacs->takeAllTexts(), ElementsAre("DELCLT3", "DELCLT5"));
    EXPECT_FALSE(server().playerNumbers()[3]);
    EXPECT_FALSE(server().playerNumbers()[5]);
    EXPECT_TRUE(eagle->waitForDisconnect());
    EXPECT_EQ(simsListed(), 1);
    EXPECT_EQ(ts_.display().simCount, "1");
    EXPECT_THAT(player.takeAllTexts(), ElementsAre("SIMNUM1"));

    // A simulator whose connection closes goes the same way.
    viper->close();
    EXPECT_TRUE(awacs->waitFor(1));
    EXPECT_THAT(awacs->takeAllTexts(), ElementsAre("DELCLT4"));
    EXPECT_EQ(simsListed(), 0);
    EXPECT_TRUE(player.waitFor(1));
    EXPECT_THAT(player.takeAllTexts(), ElementsAre("SIMNUM0"));

    // A player that leaves vanishes from the picture too.
    player.send("VALEND");
    EXPECT_TRUE(awacs->waitFor(1));
    EXPECT_THAT(awacs->takeAllTexts(), ElementsAre("DELCLT1"));

    // AWAEND unlists the client.
    awacs->send("AWAEND");
    EXPECT_TRUE(awacs->waitForDisconnect());
    EXPECT_EQ(awacsListed(), 0);
    EXPECT_EQ(ts_.display().awacsCount, "0");
    EXPECT_EQ(ts_.endsOfProgram(), 0);
}

TEST_F(RelayFlightPicture, SimulatorsAreFoundByPositionForAirplanesButBySlotForRemoval) {
    auto awacs = registeredAwacs();
    auto first = announcedSim("ONE", 2);  // slot 1
    auto second = announcedSim("TWO", 2); // slot 2
    sendAndSettle(*first, "SIMEND");
    // The simulator on slot 2 is now at position 1: its ADDAIR reaches position 2, which is
    // gone, so nothing is announced (and the number it took stays taken).
    sendAndSettle(*second, "ADDAIR", "1");
    EXPECT_THAT(awacs->takeAllTexts(), IsEmpty());
    EXPECT_TRUE(server().playerNumbers()[1]);
    EXPECT_EQ(server().sims().simulators()[1].name, "TWO");
    EXPECT_EQ(ts_.endsOfProgram(), 0);
}

} // namespace
