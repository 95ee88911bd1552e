// Whatever a connection takes (its slot, airplane numbers, listings) is given back when it ends,
// however it ends; connections that never say who they are leave after the grace; one address
// holds at most its share of a port.
#include "HostilePeers.h"
#include "RelayPeers.h"

#include <gmock/gmock.h>

#if defined(Q_OS_UNIX)
#include <unistd.h>
#endif

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

class SlotLeaks : public RelayTest {
  protected:
    explicit SlotLeaks(const std::string& settings = {}) : RelayTest({}, settings) {}
    bool numberTaken(int n) { return server().playerNumbers()[static_cast<size_t>(n)]; }
    int numbersTaken() {
        int taken = 0;
        for (int n = 1; n <= kMaxSlot; ++n)
            taken += numberTaken(n);
        return taken;
    }
    void waitUntilGone(SlotChannel& channel) {
        EXPECT_TRUE(pumpUntil([&] { return channel.sockets().loadedIndices().empty(); }));
    }
};

TEST_F(SlotLeaks, NumbersASimConnectionTookComeBackWhenItEnds) {
    // 48 ADDAIRs for a place nobody has (480 bytes), then gone: every number was taken first,
    // as ADDAIR takes it, and every one comes back.
    {
        Peer sim(ts_.simPort());
        sim.sendRaw(repeated("ADDAIR999", 48));
        ASSERT_TRUE(pumpUntil([&] { return numbersTaken() == 48; }));
    }
    waitUntilGone(server().simChannel());
    EXPECT_EQ(numbersTaken(), 0);
    Peer player(ts_.playerPort());
    player.send("VALIDR", "AFTER");
    EXPECT_THAT(player.takeTexts(1), ElementsAre("PLSNEW1@AFTER@@-"));

    // A simulator that leaves while no AWACS client is listed, with an airplane, a number its
    // place lost to a second ADDAIR, and a number a bad place kept: all come back, and the
    // players hear only the counter.
    {
        auto sim = announcedSim("VIPER", 2);
        player.settle(50ms);
        sim->sendRaw(batch({"ADDAIR1", "ADDAIR1", "ADDAIR2", "ADDAIR7"}));
        ASSERT_TRUE(pumpUntil([&] { return numbersTaken() == 5; }));
        sim->send("SIMEND");
        waitUntilGone(server().simChannel());
    }
    EXPECT_EQ(numbersTaken(), 1);
    EXPECT_THAT(player.takeTexts(1), ElementsAre("SIMNUM0"));

    // With an AWACS client listed it hears exactly what it always did: an announcement per
    // ADDAIR of a listed simulator, even for a place it lacks, and a DELCLT per airplane of the
    // record when the simulator goes; the number the record never held comes back unannounced.
    auto awacs = registeredAwacs();
    EXPECT_THAT(awacs->takeTexts(1), ElementsAre("NEWCLT1@AFTER"));
    {
        auto sim = announcedSim("HAWK", 2);
        sim->sendRaw(batch({"ADDAIR9", "ADDAIR1"}));
        EXPECT_THAT(awacs->takeTexts(2), ElementsAre("NEWCLT2@HAWK2", "NEWCLT3@HAWK3"));
        sim->close();
        EXPECT_THAT(awacs->takeTexts(1), ElementsAre("DELCLT3"));
        waitUntilGone(server().simChannel());
    }
    EXPECT_THAT(awacs->settle(50ms), IsEmpty());
    EXPECT_EQ(numbersTaken(), 1);

    // A number handed back by DELAIR and then taken by a player stays the player's when the
    // simulator that once had it leaves.
    {
        auto sim = announcedSim("OWL", 1);
        sim->send("ADDAIR1");
        ASSERT_TRUE(pumpUntil([&] { return numberTaken(2); }));
        sim->send("DELAIR1");
        ASSERT_TRUE(pumpUntil([&] { return !numberTaken(2); }));
        Peer second(ts_.playerPort());
        ASSERT_TRUE(pumpUntil([&] { return numberTaken(2); }));
        sim->close();
        waitUntilGone(server().simChannel());
        EXPECT_TRUE(numberTaken(2));
        EXPECT_TRUE(second.isConnected());
    }
    ASSERT_TRUE(pumpUntil([&] { return numbersTaken() == 1; }));

    // What follows a leave in the same write is served, and what it took for the gone connection
    // is let go when the write is over: numbers, simulators, AWACS listings, players.
    {
        Peer sim(ts_.simPort());
        sim.sendRaw(batch({"SIMNEW", "SIMEND", "SIMNEW"}) + repeated("ADDAIR1", 48));
        Peer awacsThatLeaves(ts_.awacsPort());
        awacsThatLeaves.sendRaw(batch({"AWAEND", "NAWACS"}));
        Peer playerThatLeaves(ts_.playerPort());
        playerThatLeaves.sendRaw(batch({"VALEND", "VALIDR"}));
        waitUntilGone(server().simChannel());
        EXPECT_TRUE(pumpUntil([&] { return server().awacsChannel().sockets().loadedIndices().size() == 1; }));
        EXPECT_TRUE(
            pumpUntil([&] { return server().playerChannel().sockets().loadedIndices().size() == 1; }));
    }
    EXPECT_EQ(numbersTaken(), 1);
    EXPECT_EQ(simsListed(), 0);
    EXPECT_EQ(awacsListed(), 1);
    EXPECT_EQ(server().players().roster().ubound(), 1);

    // Simulators announced out of their slots' order: the first connection's ADDAIR lands in the
    // second's record (found by position). The number goes back once, when the connection that
    // took it leaves; the record that still shows it gives nothing back later, so the player
    // who has that number since keeps it, and the next player gets a number of their own.
    {
        Peer first(ts_.simPort());
        auto second = announcedSim("OWL", 1);
        first.send("SIMNEW", "HAWK@1");
        ASSERT_TRUE(pumpUntil([&] { return simsListed() == 2; }));
        first.send("ADDAIR1");
        ASSERT_TRUE(pumpUntil([&] { return numberTaken(2); }));
        first.close();
        ASSERT_TRUE(pumpUntil([&] { return !numberTaken(2); }));
        Peer holder(ts_.playerPort());
        holder.send("VALIDR", "HOLDER");
        EXPECT_THAT(holder.takeTexts(1), ElementsAre("PLSNEW2@HOLDER@@-"));
        second->close();
        waitUntilGone(server().simChannel());
        EXPECT_TRUE(numberTaken(2));
        Peer next(ts_.playerPort());
        next.send("VALIDR", "NEXT");
        EXPECT_THAT(next.takeTexts(1), ElementsAre("PLSNEW3@NEXT@@-"));
        EXPECT_TRUE(holder.isConnected());
        EXPECT_TRUE(server().playerChannel().taken(2));
    }
    EXPECT_EQ(ts_.endsOfProgram(), 0);
}

TEST_F(SlotLeaks, AFailedAcceptKeepsNoSlot) {
    // A request that cannot be taken over: here its descriptor was closed before the accept.
    for (int i = 0; i < 3; ++i) {
#if defined(Q_OS_UNIX)
        int pipeEnds[2];
        ASSERT_EQ(::pipe(pipeEnds), 0);
        ::close(pipeEnds[0]);
        ::close(pipeEnds[1]);
        emit server().playerChannel().sockets().connectionRequest(0, pipeEnds[0]);
        emit server().awacsChannel().sockets().connectionRequest(0, pipeEnds[0]);
#else
        emit server().playerChannel().sockets().connectionRequest(0, 0x7ffffff0);
        emit server().awacsChannel().sockets().connectionRequest(0, 0x7ffffff0);
#endif
    }
    EXPECT_FALSE(server().playerChannel().taken(1));
    EXPECT_FALSE(server().awacsChannel().taken(1));
    Peer player(ts_.playerPort());
    player.send("VALIDR", "FIRST");
    EXPECT_THAT(player.takeTexts(1), ElementsAre("PLSNEW1@FIRST@@-"));
    EXPECT_EQ(server().players().roster()[1].slot, 1);
    auto awacs = registeredAwacs();
    EXPECT_EQ(server().awacs().listed()[1], 1);
}

class Squatters : public SlotLeaks {
  protected:
    Squatters() : SlotLeaks("[access]\nidle-grace = 1\nper-address = 3\n") {}
};

TEST_F(Squatters, ConnectionsThatNeverSayWhoTheyAreLeaveAfterTheGrace) {
    auto silentSpy = std::make_unique<Peer>(ts_.aiSpyPort());
    ASSERT_TRUE(pumpUntil([&] { return ts_.display().aiSpyConnected; }));
    Peer watcher(ts_.playerPort());
    watcher.send("VALIDR", "WATCHER");
    auto awacs = registeredAwacs();
    auto sim = announcedSim("VIPER", 1);
    watcher.settle(50ms);
    awacs->takeAllTexts();

    Peer silentPlayer(ts_.playerPort());
    Peer silentAwacs(ts_.awacsPort());
    Peer silentSim(ts_.simPort());
    EXPECT_TRUE(silentPlayer.waitForDisconnect(5s));
    EXPECT_TRUE(silentAwacs.waitForDisconnect(5s));
    EXPECT_TRUE(silentSim.waitForDisconnect(5s));
    EXPECT_TRUE(silentSpy->waitForDisconnect(5s));
    // They leave as a close would have them leave.
    EXPECT_THAT(watcher.takeAllTexts(), testing::IsSupersetOf({"PLSDEL0", "AWANUM1", "SIMNUM1"}));
    EXPECT_THAT(awacs->takeAllTexts(), testing::Contains("DELCLT2"));
    EXPECT_FALSE(ts_.display().aiSpyConnected);

    // The honest AI Spy gets the link; the registered stay past the grace.
    Peer spy(ts_.aiSpyPort());
    spy.sendRaw("AIUPDT");
    EXPECT_THAT(awacs->takeTexts(1), ElementsAre("AILOCA"));
    pumpFor(1500ms);
    EXPECT_TRUE(watcher.isConnected());
    EXPECT_TRUE(awacs->isConnected());
    EXPECT_TRUE(sim->isConnected());
    EXPECT_TRUE(spy.isConnected());
    EXPECT_EQ(server().playerChannel().sockets().loadedIndices().size(), 1u);
    EXPECT_EQ(ts_.endsOfProgram(), 0);
}

class Crowded : public SlotLeaks {
  protected:
    Crowded() : SlotLeaks("[access]\nper-address = 3\n") {}
};

TEST_F(Crowded, OneAddressHoldsAtMostItsShareOfAPort) {
    for (quint16 port : {ts_.playerPort(), ts_.awacsPort(), ts_.simPort()}) {
        std::vector<std::unique_ptr<Peer>> held;
        for (int i = 0; i < 3; ++i)
            held.push_back(std::make_unique<Peer>(port));
        // Loopback is an address like any other: the fourth is turned away at once.
        EXPECT_TRUE(turnedAway(port)) << port;
        for (auto& peer : held)
            EXPECT_TRUE(peer->isConnected()) << port;
        held.front()->close();
        pumpFor(50ms);
        Peer again(port);
        pumpFor(50ms);
        EXPECT_TRUE(again.isConnected()) << port;
    }
    EXPECT_EQ(ts_.endsOfProgram(), 0);
}

} // namespace
