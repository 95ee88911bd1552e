// What one connection's messages make the server send to the others is paced by its budget: a
// peer registered under huge names that sends verdict after verdict gets them served at the
// budget's pace, every one and in order, while the honest peers' own exchanges and the relay of
// positions go on at once.
#include "HostilePeers.h"
#include "RelayPeers.h"

#include <gmock/gmock.h>

using ::testing::ElementsAre;

namespace {

constexpr int kRate = 32 * 1024;
constexpr size_t kNameBytes = 16000;
constexpr int kVerdicts = 10;

class BroadcastBudget : public RelayTest {
  protected:
    BroadcastBudget() : RelayTest({}, "[access]\nbroadcast-rate = 32 KiB\n") {}

    // The bytes of the data of the messages in the peer's inbox with that command.
    static size_t bytesOf(const Peer& peer, const std::string& command) {
        size_t bytes = 0;
        for (const Received& m : peer.inbox())
            if (m.command == command) bytes += m.data.size();
        return bytes;
    }
    static size_t countOf(const Peer& peer, const std::string& command) {
        size_t n = 0;
        for (const Received& m : peer.inbox())
            n += m.command == command;
        return n;
    }
};

TEST_F(BroadcastBudget, OnePeersBroadcastsArePacedNotDroppedAndNobodyElseWaits) {
    Peer honest(ts_.playerPort());
    honest.send("VALIDR", "HONEST");
    auto awacs = registeredAwacs();
    honest.settle(50ms);
    awacs->takeAllTexts();

    // Registered under a huge name; every verdict tells every player that name again.
    Peer loud(ts_.playerPort());
    const std::string name(kNameBytes, 'N');
    loud.sendRaw(batch({"VALIDR" + name}) + repeated("VERFOK", kVerdicts));
    pumpFor(300ms);
    // Its first second's budget, and the one message that went past it.
    EXPECT_LE(bytesOf(honest, "PLSNEW") + bytesOf(honest, "PLSUPD"), size_t(kRate) + 2 * (kNameBytes + 16));
    EXPECT_LT(countOf(honest, "PLSUPD"), size_t(kVerdicts));

    // Meanwhile the honest player's verdict and position go through at once.
    honest.send("VERFOK");
    honest.send("F4LOCA", "here");
    EXPECT_TRUE(pumpUntil(
        [&] {
            for (const Received& m : honest.inbox())
                if (m.command == "PLSUPD" && m.data == "1@HONEST@@O") return true;
            return false;
        },
        1s));
    EXPECT_THAT(awacs->takeTexts(2, 1s), testing::Contains("INDATA1@here"));

    // Every verdict is served in the end, in order: none was dropped.
    ASSERT_TRUE(pumpUntil([&] { return countOf(honest, "PLSUPD") == size_t(kVerdicts) + 1; }, 20s));
    EXPECT_EQ(countOf(honest, "PLSNEW"), 1u);
    // And what the loud peer asks after them is answered after them.
    loud.send("GETLST");
    EXPECT_TRUE(pumpUntil([&] { return countOf(loud, "AWANUM") == 1; }, 5s));
    EXPECT_EQ(countOf(loud, "PLSUPD"), size_t(kVerdicts) + 1);
    EXPECT_EQ(ts_.endsOfProgram(), 0);
}

} // namespace
