// One connection sending what no honest peer sends: the work it causes stays linear in its bytes
// (a failing statement unwinds nothing), what it can make the server keep stays bounded, a
// reader gets every answer whole, and nothing it sends reaches another peer's stream as a
// message of its own.
#include "HostilePeers.h"
#include "RelayPeers.h"
#include "setups/SetupCatalogue.h"
#include "support/ThrowCounter.h"

#include <gmock/gmock.h>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Not;

namespace {

class HostileWork : public RelayTest {
  protected:
    // A player that registered; its own registration messages are taken.
    std::unique_ptr<Peer> registeredPlayer(const std::string& name) {
        auto peer = std::make_unique<Peer>(ts_.playerPort());
        const int before = server().players().roster().ubound();
        peer->send("VALIDR", name);
        EXPECT_TRUE(pumpUntil([&] { return server().players().roster().ubound() == before + 1; }));
        peer->settle(30ms);
        peer->takeAllTexts();
        return peer;
    }
    // Sends GETLST and waits for the end of the list: everything sent before it was handled.
    // The inbox is emptied.
    static void roundTrip(Peer& player) {
        player.send("GETLST");
        EXPECT_TRUE(pumpUntil(
            [&] {
                const auto& inbox = player.inbox();
                return std::any_of(inbox.begin(), inbox.end(),
                                   [](const Received& m) { return m.command == "AWANUM"; });
            },
            20s));
        player.takeAllTexts();
    }
    int listedOnSlot(int slot) {
        int n = 0;
        const auto& players = server().players().roster();
        for (int i = 1; i <= players.ubound(); ++i)
            n += players[i].slot == slot;
        return n;
    }
};

TEST_F(HostileWork, FailingStatementsThatAPeerDrivesUnwindNothing) {
    const std::optional<long> before = exceptionsThrownSoFar();
    if (!before) GTEST_SKIP() << "exceptions cannot be counted here";
    auto alpha = registeredPlayer("ALPHA");
    auto awacs = registeredAwacs();
    auto sim = std::make_unique<Peer>(ts_.simPort());

    // Lone NULs: every one a message too short to have data.
    alpha->sendRaw(QByteArray(100000, '\0'));
    roundTrip(*alpha);
    // Numbers out of range, lists that are not there, places no simulator has.
    alpha->sendRaw(repeated("ERRRDM99999", 500) + repeated("GETVLO99999", 500) + repeated("ERRADDx", 500) +
                   repeated("ERRGET0", 500) + repeated("ERRADD1@99999", 500));
    roundTrip(*alpha);
    sim->sendRaw(repeated("SIMLOCabc@x", 500) + repeated("ADDAIR99999999999", 40) + repeated("DELAIR7", 500) +
                 repeated("SIMNEWx@-5", 3));
    ASSERT_TRUE(pumpUntil([&] { return simsListed() == 3; }));
    roundTrip(*alpha);
    // Every line of a long error list explained against a setup the player never chose.
    alpha->sendRaw(batch({"ERRRDM32767", "ERRGET1", "ERRGET1", "ERRGET1"}));
    const auto lists = alpha->take(3 * 32769, 20s);
    ASSERT_EQ(lists.size(), 3u * 32769);
    EXPECT_EQ(lists.front().text(), "ERRRDM1@32767");
    EXPECT_EQ(lists.at(32768).text(), "ERRDON1");
    // Answers to a connection that is gone: a VALEND, then requests behind it in the same write.
    auto leaving = registeredPlayer("GONE");
    leaving->sendRaw(batch({"VALEND"}) + repeated("GETLST", 1000));
    ASSERT_TRUE(pumpUntil([&] { return server().players().roster().ubound() == 1; }));
    roundTrip(*alpha);

    EXPECT_LT(*exceptionsThrownSoFar() - *before, 50);
    EXPECT_EQ(ts_.endsOfProgram(), 0);
}

TEST_F(HostileWork, RegistrationsAndPlacesAreBoundedPerConnection) {
    auto alpha = registeredPlayer("ALPHA");
    // 30,000 registrations in one write: four are listed, the rest get the server's silence.
    NonReader flood(ts_.playerPort());
    flood.send(repeated("VALIDRMOB", 30000));
    auto awacsFlood = std::make_unique<Peer>(ts_.awacsPort());
    awacsFlood->sendRaw(repeated("NAWACS", 100000));
    NonReader simFlood(ts_.simPort());
    simFlood.send(repeated("SIMNEWX@32767", 5000));
    roundTrip(*alpha);
    ASSERT_TRUE(
        pumpUntil([&] { return awacsListed() == 4 && simsListed() == 4 && listedOnSlot(2) == 4; }, 10s));
    pumpFor(200ms); // and no more come
    EXPECT_EQ(listedOnSlot(2), 4);
    EXPECT_EQ(awacsListed(), 4);
    const auto& sims = server().sims().simulators();
    long places = 0;
    for (int i = 1; i <= sims.ubound(); ++i)
        places += sims[i].airplanes.ubound();
    EXPECT_EQ(sims.ubound(), 4);
    EXPECT_LE(places, SimClients::kMaxPlaces);
    // An honest simulator still joins.
    auto honest = announcedSim("VIPER", 2);
    EXPECT_EQ(server().sims().simulators()[5].name, "VIPER");
    EXPECT_EQ(ts_.endsOfProgram(), 0);
}

#if defined(__GLIBC__) && !defined(__SANITIZE_ADDRESS__)
// What a peer sent is not kept after its arrival, let alone after the peer has gone.
TEST_F(HostileWork, NothingAPeerSentIsKeptOnceItLeaves) {
    auto alpha = registeredPlayer("ALPHA");
    const size_t before = mallinfo2().uordblks;
    {
        std::vector<std::unique_ptr<Peer>> peers;
        for (int i = 0; i < 3; ++i) {
            peers.push_back(std::make_unique<Peer>(ts_.playerPort()));
            peers.back()->sendRaw(QByteArray(1 << 21, '\0') + batch({"GETLST"}));
        }
        for (auto& peer : peers)
            EXPECT_TRUE(peer->waitFor(3, 20s));
    }
    ASSERT_TRUE(pumpUntil([&] { return server().playerChannel().sockets().loadedIndices().size() == 1; }));
    roundTrip(*alpha);
    EXPECT_LT(mallinfo2().uordblks, before + 16 * 1024 * 1024);
}
#endif

TEST_F(HostileWork, AReaderGetsEveryAnswerWholeAndOneThatStopsReadingHoldsUpNobody) {
    // A setup far larger than the output cap.
    constexpr int kLines = 200000;
    std::string setup = "Huge\r\n";
    for (int i = 1; i <= kLines; ++i)
        setup += "CHKSUM@data\\file" + std::to_string(i) + ".dat@-1234567\r\n";
    // Beyond the default cap on setup files too, which the settings may raise.
    ts_.server().setups().setLimits({16 << 20, 4 << 20});
    ts_.catalogue({{"huge.stp", setup}});

    auto reader = registeredPlayer("READER");
    reader->send("GETVLO", "1");
    const auto answer = reader->take(kLines + 2, 60s);
    ASSERT_EQ(answer.size(), static_cast<size_t>(kLines + 2));
    EXPECT_EQ(answer.front().text(), "VLRDIM" + std::to_string(kLines));
    EXPECT_EQ(answer.at(kLines).text(),
              "VLSADD" + std::to_string(kLines) + "@CHKSUM@data\\file200000.dat@-1234567");
    EXPECT_EQ(answer.back().text(), "VLDONE");

    // A player that asks for a hundred huge answers and reads none of them.
    NonReader hog(ts_.playerPort());
    hog.send(batch({"VALIDRHOG"}) + repeated("GETVLO1", 100));
    pumpFor(100ms);
    roundTrip(*reader);
    EXPECT_EQ(ts_.endsOfProgram(), 0);
}

TEST_F(HostileWork, ANulInsideDataNeverReachesAnotherPeersStream) {
    auto awacs = registeredAwacs();
    // An AI Spy record whose name holds a NUL and a command after it.
    Peer spy(ts_.aiSpyPort());
    std::string body = "1*A" + std::string(1, '\0') + "DISCON\n250/8K\nFL 5#";
    spy.sendRaw(QByteArray::fromStdString("AIUPDT" + std::string(60 - body.size() - 3, ' ') + "AI\n" + body));
    EXPECT_THAT(awacs->takeTexts(1), ElementsAre("AILOCAA"));
    EXPECT_THAT(awacs->settle(), Not(Contains(testing::StartsWith("DISCON"))));

#ifndef Q_OS_WIN // under Wine this setup reads as one without lines: to be looked into
    // A setup line holding a NUL, as one imported from elsewhere may.
    ts_.catalogue({{"nul.stp", "Nul\r\nCURSET@BMS" + std::string(1, '\0') + "PLSDEL1\r\n"}});
    auto player = std::make_unique<Peer>(ts_.playerPort());
    player->send("GETVLO", "1");
    EXPECT_THAT(player->takeTexts(3), ElementsAre("VLRDIM1", "VLSADD1@CURSET@BMS", "VLDONE"));
    EXPECT_TRUE(player->settle().empty());
#endif
}

} // namespace
