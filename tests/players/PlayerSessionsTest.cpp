// The player list and error lists as records, driven directly: the slots used here have no
// socket, so what the routines send is dropped (logging is off) and only state is checked.
#include "players/PlayerSessions.h"
#include "support/TestServer.h"

#include <gmock/gmock.h>

namespace {

std::vector<std::string> names(const PlayerSessions& p) {
    std::vector<std::string> out;
    for (int i = 1; i <= p.Players().ubound(); ++i)
        out.push_back(p.Players()[i].Name);
    return out;
}

std::vector<int16_t> errors(const PlayerRecord& r) {
    std::vector<int16_t> out;
    for (int i = 1; i <= r.Errors.ubound(); ++i)
        out.push_back(r.Errors[i]);
    return out;
}

struct Sessions : ::testing::Test {
    TestServer ts{"[SETUPLIST]\r\nNUM=0\r\n[DEBUG]\r\nLOG=0\r\n"};
    PlayerSessions& players = ts.server().players();
    void connect(int16_t slot) { players.PlayerSlotUsed()[static_cast<size_t>(slot)] = true; }
};

TEST_F(Sessions, RegistrationMarksRowsAndTwoRecordsOnOneSlot) {
    connect(1);
    connect(2);
    players.AddToPlayerList("Alice", 1);
    players.AddToPlayerList("Bob@home", 2); // "@" is kept as sent
    players.AddToPlayerList("Alice again", 1);
    ASSERT_EQ(players.Players().ubound(), 3);
    const PlayerRecord& first = players.Players()[1];
    EXPECT_EQ(first.Status, "-");
    EXPECT_EQ(first.PlayerSetupName, "");
    EXPECT_EQ(first.SetupNumber, 0);
    EXPECT_EQ(first.Errors.ubound(), 0);

    ASSERT_EQ(ts.display().rows.size(), 3u);
    EXPECT_EQ(ts.display().rows[2].image, 3);
    players.UpdateVerifStatus("OK", 1); // both records on slot 1
    players.UpdateVerifStatus("NOK", 2);
    ASSERT_EQ(ts.display().rows.size(), 3u);
    EXPECT_EQ(ts.display().rows[0].text, "Alice ()");
    EXPECT_EQ(ts.display().rows[0].image, 1);
    EXPECT_EQ(ts.display().rows[1].text, "Bob@home ()");
    EXPECT_EQ(ts.display().rows[1].image, 2);
    EXPECT_EQ(ts.display().rows[2].image, 1);

    players.UpdateVerifStatus("?", 1);
    EXPECT_EQ(players.Players()[1].Status, "-");
    EXPECT_EQ(players.Players()[3].Status, "-");
    players.UpdateVerifStatus("whatever", 2); // not a status: no mark changes
    EXPECT_EQ(players.Players()[2].Status, "X");
    players.UpdateVerifStatus("OK", 9); // nobody on the slot
    EXPECT_THAT(names(players), ::testing::ElementsAre("Alice", "Bob@home", "Alice again"));

    // Both records go with their slot, once; a second close for the slot changes nothing.
    players.DeletePlayer(1);
    EXPECT_THAT(names(players), ::testing::ElementsAre("Bob@home"));
    EXPECT_FALSE(players.PlayerSlotUsed()[1]);
    players.DeletePlayer(1);
    players.DeletePlayer(0);
    players.DeletePlayer(49);
    EXPECT_THAT(names(players), ::testing::ElementsAre("Bob@home"));
    ASSERT_EQ(ts.display().rows.size(), 1u);
    EXPECT_EQ(ts.display().rows[0].text, "Bob@home ()");
    EXPECT_EQ(ts.endsOfProgram(), 0);
}

TEST_F(Sessions, ErrorListsAreReplacedByRedimAndFilledByIndex) {
    connect(1);
    connect(2);
    players.AddToPlayerList("Alice", 1);
    players.AddToPlayerList("Bob", 2);
    players.AddToPlayerList("Alice twin", 1);
    const PlayerRecord& alice = players.Players()[1];

    players.PlayerErrorListAdd("1@4", 1); // before any ERRRDM: no room, nothing changes
    EXPECT_EQ(alice.Errors.ubound(), 0);

    players.PlayerErrorListRedim(1, 3);
    players.PlayerErrorListAdd("2@7", 1);
    players.PlayerErrorListAdd(" 1.5@4", 1); // 1.5 rounds to 2, overwriting
    players.PlayerErrorListAdd("1@ 4xyz", 1);
    players.PlayerErrorListAdd("4@9", 1);     // past the count
    players.PlayerErrorListAdd("3", 1);       // no line number
    players.PlayerErrorListAdd("3@99999", 1); // not a 16-bit number
    players.PlayerErrorListDone(1);
    EXPECT_THAT(errors(alice), ::testing::ElementsAre(4, 4, 0));
    EXPECT_EQ(players.Players()[3].Errors.ubound(), 0); // only the first record on the slot

    players.PlayerErrorListRedim(1, -1); // a negative count keeps the old list
    EXPECT_THAT(errors(alice), ::testing::ElementsAre(4, 4, 0));
    players.PlayerErrorListRedim(1, 0);
    EXPECT_TRUE(errors(alice).empty());
    players.PlayerErrorListRedim(7, 2); // nobody there
    EXPECT_TRUE(errors(players.Players()[2]).empty());
    EXPECT_EQ(ts.endsOfProgram(), 0);
}

} // namespace
