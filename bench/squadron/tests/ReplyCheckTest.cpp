#include "ReplyCheck.h"

#include <gtest/gtest.h>

using Kind = ReplyCheck::Kind;
using Result = ReplyCheck::Result;

// A whole validation exchange with broadcasts of other players in between.
TEST(ReplyCheckTest, FollowsTheExchangeAmongBroadcasts) {
    ReplyCheck c("Pilot2");
    c.expect(Kind::Register);
    EXPECT_EQ(c.feed("PLSNEW", "3@Pilot9@@-"), Result::Pending);
    EXPECT_EQ(c.feed("PLSNEW", "4@Pilot2@@-"), Result::Ok);
    EXPECT_EQ(c.ownPosition(), 4);

    c.expect(Kind::PlayerList);
    for (auto [cmd, data] : {std::pair{"PLRDIM", "2"},
                             {"PLSADD", "1@Pilot9@@-"},
                             {"AWANUM", "7"},
                             {"PLSADD", "2@Pilot2@@-"},
                             {"PLDONE", ""}})
        EXPECT_EQ(c.feed(cmd, data), Result::Pending) << cmd;
    EXPECT_EQ(c.feed("AWANUM", "7"), Result::Ok);
    EXPECT_EQ(c.ownPosition(), 2);

    c.expect(Kind::SetupList);
    EXPECT_EQ(c.feed("PLSUPD", "2@Pilot2@@-"), Result::Pending);
    EXPECT_EQ(c.feed("SLRDIM", "1"), Result::Pending);
    EXPECT_EQ(c.feed("SLSADD", "1@Evening"), Result::Pending);
    EXPECT_EQ(c.feed("SLDONE", ""), Result::Ok);
    EXPECT_EQ(c.setupCount(), 1);

    c.expect(Kind::Setup);
    EXPECT_EQ(c.feed("VLRDIM", "2"), Result::Pending);
    EXPECT_EQ(c.feed("VLSADD", "1@CURSET@Evening"), Result::Pending);
    EXPECT_EQ(c.feed("VLSADD", "2@CHKSUM@data\\a.dat@123"), Result::Pending);
    EXPECT_EQ(c.feed("VLDONE", ""), Result::Ok);
    EXPECT_EQ(c.lineCount(), 2);

    c.expect(Kind::Verdict, 0, -1, "X");
    EXPECT_EQ(c.feed("PLSUPD", "1@Pilot9@Evening@O"), Result::Pending);
    EXPECT_EQ(c.feed("PLSUPD", "2@Pilot2@Evening@X"), Result::Ok);

    // Pilot9 leaves while the list is asked for: the position moves and the count is not held to.
    c.expect(Kind::ErrorList, 2, 2);
    EXPECT_EQ(c.feed("PLSDEL", "1"), Result::Pending);
    EXPECT_EQ(c.ownPosition(), 1);
    EXPECT_EQ(c.feed("ERRDON", "2"), Result::Ok);
    EXPECT_EQ(c.stray(), 0);
}

TEST(ReplyCheckTest, CatchesWrongAndUnaskedReplies) {
    ReplyCheck c("Pilot1");
    c.expect(Kind::SetupList);
    EXPECT_EQ(c.feed("SLRDIM", "2"), Result::Pending);
    EXPECT_EQ(c.feed("SLSADD", "1@a"), Result::Pending);
    EXPECT_EQ(c.feed("SLDONE", ""), Result::Bad); // one entry short

    c.expect(Kind::ErrorList, 1, 2);
    EXPECT_EQ(c.feed("ERRRDM", "1@1"), Result::Bad); // the player reported two

    c.expect(Kind::ErrorList, 1, 1);
    EXPECT_EQ(c.feed("ERRRDM", "1@1"), Result::Pending);
    EXPECT_EQ(c.feed("ERRADD", "1@1@The data\\a.dat file is differrent or absent"), Result::Pending);
    EXPECT_EQ(c.feed("ERRDON", "1"), Result::Ok);

    c.expect(Kind::Verdict, 0, -1, "O");
    EXPECT_EQ(c.feed("PLSUPD", "1@Pilot1@a@X"), Result::Bad);

    EXPECT_EQ(c.feed("VLDONE", ""), Result::Pending); // nothing asked for
    EXPECT_EQ(c.stray(), 1);
}
