// Peers on another host whose link is cut: no FIN, no reset ever arrives. Every port gives back
// what they held within the silence limit (AWACS clients after their listing's short grace),
// and the peers that remain hear what a close would have told them.
#include "HostilePeers.h"
#include "RelayPeers.h"
#include "support/FarHost.h"

#include <gmock/gmock.h>

using ::testing::Contains;
using ::testing::IsSupersetOf;
using ::testing::Not;

namespace {

class VanishedPeers : public ::testing::Test {
  protected:
    // The far host's namespace first: the server's listeners are made in it.
    FarHost far_;
    // A short silence limit keeps the test short; registration is not asked for here.
    TestServer ts_{{}, true, "[access]\nsilence-limit = 2\nidle-grace = 0\n"};

    Server& server() { return ts_.server(); }
    // A far connection that sent its messages and was taken in by the server.
    int farPeer(quint16 port, const std::vector<std::string>& messages, SlotChannel* channel) {
        const size_t before = channel ? channel->sockets().loadedIndices().size() : 0;
        const int s = far_.connect(port);
        EXPECT_GE(s, 0);
        if (!messages.empty()) {
            EXPECT_TRUE(FarHost::send(s, batch(messages)));
        }
        if (channel) {
            EXPECT_TRUE(pumpUntil([&] { return channel->sockets().loadedIndices().size() == before + 1; }));
        }
        return s;
    }
};

TEST_F(VanishedPeers, EveryPortGivesBackWhatAVanishedPeerHeld) {
    if (!far_.ready()) GTEST_SKIP() << far_.error().toStdString();
    Peer watcher(ts_.playerPort());
    watcher.send("VALIDR", "NEAR");
    Peer observer(ts_.awacsPort());
    observer.send("NAWACS");
    ASSERT_TRUE(pumpUntil([&] { return server().awacs().listed().ubound() == 1; }));

    farPeer(ts_.playerPort(), {"VALIDRFAR"}, &server().playerChannel());
    farPeer(ts_.playerPort(), {}, &server().playerChannel());
    farPeer(ts_.awacsPort(), {"NAWACS"}, &server().awacsChannel());
    farPeer(ts_.awacsPort(), {}, &server().awacsChannel());
    farPeer(ts_.simPort(), {"SIMNEWFARSIM@2", "ADDAIR1"}, &server().simChannel());
    const int spy = farPeer(ts_.aiSpyPort(), {}, nullptr);
    ASSERT_TRUE(pumpUntil([&] {
        return server().players().roster().ubound() == 2 && server().awacs().listed().ubound() == 2 &&
               server().sims().simulators().ubound() == 1 && ts_.display().aiSpyConnected;
    }));
    ASSERT_TRUE(FarHost::send(spy, "AIUPDT"));
    // Slots 1-3 are the two near players' and the far ones'; the airplane took 4.
    ASSERT_TRUE(pumpUntil([&] { return server().playerNumbers()[4]; }));
    pumpFor(100ms);
    watcher.takeAllTexts();
    observer.takeAllTexts();

    far_.cut();
    const auto allGone = [&] {
        return server().playerChannel().sockets().loadedIndices() == std::vector<int>{1} &&
               server().awacsChannel().sockets().loadedIndices() == std::vector<int>{1} &&
               server().simChannel().sockets().loadedIndices().empty() && !ts_.display().aiSpyConnected &&
               server().players().roster().ubound() == 1 && server().awacs().listed().ubound() == 1 &&
               server().sims().simulators().ubound() == 0;
    };
    ASSERT_TRUE(pumpUntil(allGone, 30s))
        << "player slots " << server().playerChannel().sockets().loadedIndices().size() << ", AWACS slots "
        << server().awacsChannel().sockets().loadedIndices().size() << ", AWACS listed "
        << server().awacs().listed().ubound() << ", SIM slots "
        << server().simChannel().sockets().loadedIndices().size() << ", AI Spy "
        << ts_.display().aiSpyConnected;
    // Every number is free again but the watcher's: the far players' slots and the airplane's.
    for (int n = 2; n <= kMaxSlot; ++n)
        EXPECT_FALSE(server().playerNumbers()[static_cast<size_t>(n)]) << n;

    // What the others were told is what closes would have told them.
    pumpFor(100ms);
    const std::vector<std::string> toWatcher = watcher.takeAllTexts();
    EXPECT_THAT(toWatcher, IsSupersetOf({"PLSDEL2", "PLSDEL0", "SIMNUM0", "AWANUM1"}));
    EXPECT_THAT(toWatcher, Not(Contains(testing::StartsWith("AWANUM0"))));
    EXPECT_THAT(observer.takeAllTexts(), IsSupersetOf({"DELCLT2", "DELCLT3", "DELCLT4"}));

    // The ports take newcomers as before: an AI Spy, an AWACS client.
    Peer spyAgain(ts_.aiSpyPort());
    EXPECT_TRUE(pumpUntil([&] { return ts_.display().aiSpyConnected; }));
    Peer newcomer(ts_.awacsPort());
    newcomer.send("NAWACS");
    EXPECT_TRUE(pumpUntil([&] { return server().awacs().listed().ubound() == 2; }));
    EXPECT_EQ(ts_.endsOfProgram(), 0);
}

} // namespace
