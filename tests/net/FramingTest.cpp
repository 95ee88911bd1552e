#include "net/Framing.h"

#include <gtest/gtest.h>

#include <string>

using namespace std::string_literals;

namespace {
struct Parsed {
    CommandList list;
    bool errorPending;
};
Parsed parse(const std::string& bytes, bool ai = false) {
    ErrorLog log("unused", false, {});
    ErrorTrap trap(log, "ParseData");
    CommandList list = ai ? splitAiArrival(bytes, trap) : splitArrival(bytes, trap);
    return {list, trap.pending()};
}
} // namespace

TEST(Framing, SplitsAnArrivalAtEveryNul) {
    auto p = parse("SYNCRO\0VERFOKabc\0"s);
    ASSERT_EQ(p.list.ubound(), 2);
    EXPECT_EQ(p.list[1].Command, "SYNCRO");
    EXPECT_EQ(p.list[1].Data, "");
    EXPECT_EQ(p.list[2].Command, "VERFOK");
    EXPECT_EQ(p.list[2].Data, "abc");
    EXPECT_FALSE(p.errorPending);
}

TEST(Framing, DropsWhatFollowsTheLastNul) {
    EXPECT_EQ(parse("VERFOKab").list.ubound(), 0);
    auto p = parse("F4LOCA1\0F4LOC"s);
    ASSERT_EQ(p.list.ubound(), 1);
    EXPECT_EQ(p.list[1].Data, "1");
    // The tail of a split message reads as a message of its own.
    auto tail = parse("A2@3\0"s);
    ASSERT_EQ(tail.list.ubound(), 1);
    EXPECT_EQ(tail.list[1].Command, "A2@3");
}

TEST(Framing, ShortMessagesKeepAShortCommandAndLeaveAnErrorPending) {
    auto lone = parse("\0"s);
    ASSERT_EQ(lone.list.ubound(), 1);
    EXPECT_EQ(lone.list[1].Command, "");
    EXPECT_TRUE(lone.errorPending);

    auto p = parse("ABC\0\0SYNCRO\0"s);
    ASSERT_EQ(p.list.ubound(), 3);
    EXPECT_EQ(p.list[1].Command, "ABC");
    EXPECT_EQ(p.list[2].Command, "");
    EXPECT_EQ(p.list[3].Command, "SYNCRO"); // the batch goes on after the failure
    EXPECT_TRUE(p.errorPending);

    EXPECT_FALSE(parse("SYNCRO\0"s).errorPending); // exactly six characters is fine
}

TEST(Framing, TheAiSpyArrivalIsOneCommandNulsIncluded) {
    auto p = parse("AIUPDTxyz", true);
    ASSERT_EQ(p.list.ubound(), 1);
    EXPECT_EQ(p.list[1].Command, "AIUPDT");
    EXPECT_EQ(p.list[1].Data, "xyz");
    EXPECT_EQ(parse("AIUPDTxyz\0"s, true).list[1].Data, "xyz\0"s);
    auto shortOne = parse("AIU", true);
    EXPECT_EQ(shortOne.list[1].Command, "AIU");
    EXPECT_TRUE(shortOne.errorPending);
}

TEST(Framing, ParseIntoReplacesTheSlotsCommandsAndTrapsABadSlot) {
    VbList<CommandList> arrays = VbList<CommandList>::withUpperBound(2);
    ErrorLog log("unused", false, {});
    ParseInto(arrays, 2, "SYNCRO\0"s, log, "ParseData");
    ParseInto(arrays, 2, "VERFOK\0"s, log, "ParseData");
    ASSERT_EQ(arrays[2].ubound(), 1);
    EXPECT_EQ(arrays[2][1].Command, "VERFOK");
    ParseInto(arrays, 5, "SYNCRO\0"s, log, "ParseData"); // skipped, not a crash
    EXPECT_EQ(arrays.ubound(), 2);
}
