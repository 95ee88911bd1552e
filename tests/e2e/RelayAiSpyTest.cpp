// The AI Spy link over loopback: its updates reach every AWACS client as AILOCA text, and
// only one AI Spy is served at a time.
#include "RelayPeers.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

// One 60-character record: name line, speed line, altitude line, and an unread last character.
std::string aiRecord(const std::string& name, const std::string& speed, const std::string& altitude) {
    std::string body = "1*" + name + "\n" + speed + "\n" + altitude + "#";
    return std::string(60 - body.size() - 3, ' ') + "AI\n" + body;
}

QByteArray update(const std::string& records) {
    return QByteArray::fromStdString("AIUPDT" + records);
}

class RelayAiSpy : public RelayTest {};

TEST_F(RelayAiSpy, UpdatesReachEveryAwacsClientAndASecondAiSpyIsNotServedWhileTheFirstIsUp) {
    auto first = registeredAwacs();
    auto second = registeredAwacs();
    auto spy = std::make_unique<Peer>(ts_.aiSpyPort());
    EXPECT_TRUE(ts_.display().aiSpyConnected);
    spy->sendRaw(
        update(aiRecord("BANDIT1", "250/8K", "FL 5") + aiRecord("BANDIT2", "SPD 300/120K", "FL 120")));
    const std::string converted = "BANDIT1   25000805BANDIT2   300120120";
    EXPECT_THAT(first->takeTexts(1), ElementsAre("AILOCA" + converted));
    EXPECT_THAT(second->takeTexts(1), ElementsAre("AILOCA" + converted));
    // Anything but AIUPDT is ignored; an update of nothing relays empty text.
    spy->sendRaw("HELLO!whatever");
    pumpFor(30ms);
    spy->sendRaw("AIUPDT");
    EXPECT_TRUE(first->waitFor(1));
    EXPECT_THAT(first->takeAllTexts(), ElementsAre("AILOCA"));
    second->takeAllTexts();

    EXPECT_TRUE(turnedAway(ts_.aiSpyPort(), update(aiRecord("INTRUDER", "", "FL 1"))));
    EXPECT_THAT(second->settle(), IsEmpty());
    spy.reset();
    ASSERT_TRUE(pumpUntil([&] { return !ts_.display().aiSpyConnected; }));
    Peer third(ts_.aiSpyPort());
    EXPECT_TRUE(ts_.display().aiSpyConnected);
    third.sendRaw(update(aiRecord("THIRD", "", "FL 2")));
    EXPECT_THAT(second->takeTexts(1), ElementsAre("AILOCATHIRD     02"));
    EXPECT_EQ(ts_.endsOfProgram(), 0);
}

} // namespace
