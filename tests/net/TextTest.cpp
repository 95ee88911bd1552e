#include "net/Text.h"

#include <gtest/gtest.h>

TEST(SplitAt, KeepsEveryFieldIncludingEmptyOnes) {
    auto f = text::splitAt("a@@b@");
    ASSERT_EQ(f.ubound(), 4);
    EXPECT_EQ(f[1], "a");
    EXPECT_EQ(f[2], "");
    EXPECT_EQ(f[3], "b");
    EXPECT_EQ(f[4], "");
    EXPECT_EQ(text::splitAt("").ubound(), 1);
    EXPECT_THROW(text::splitAt("x")[2], RuntimeError);
}

TEST(LeadingNumber, ReadsTheLongestLeadingDecimalNumber) {
    EXPECT_EQ(text::leadingNumber("  42abc"), 42);
    EXPECT_EQ(text::leadingNumber("3@x"), 3);
    EXPECT_EQ(text::leadingNumber("-7"), -7);
    EXPECT_EQ(text::leadingNumber("abc"), 0);
    EXPECT_EQ(text::leadingNumber(""), 0);
    EXPECT_EQ(text::leadingNumber("."), 0);
    EXPECT_DOUBLE_EQ(text::leadingNumber("2.5kg"), 2.5);
}

TEST(LeadingNumber, RoundsHalvesToTheEvenNeighbourAndOverflowsOutside16Bits) {
    EXPECT_EQ(text::leadingInt16("2.5"), 2);
    EXPECT_EQ(text::leadingInt16("3.5"), 4);
    EXPECT_EQ(text::leadingInt16("-2.5"), -2);
    EXPECT_EQ(text::leadingInt16("2.51"), 3);
    EXPECT_EQ(text::leadingInt16("32767"), 32767);
    try {
        text::leadingInt16("32768");
        FAIL() << "no overflow";
    } catch (const RuntimeError& e) {
        EXPECT_EQ(e.number, 6);
    }
    EXPECT_THROW(text::leadingInt16("99999999999999999999999"), RuntimeError);
}

TEST(StrictConversion, RefusesTextThatIsNotANumber) {
    EXPECT_EQ(text::strictInt32(" 12 "), 12);
    EXPECT_EQ(text::strictInt32("-3"), -3);
    for (const char* bad : {"", "x", "3x", "1 2", "-"}) {
        try {
            text::strictInt32(bad);
            FAIL() << bad;
        } catch (const RuntimeError& e) {
            EXPECT_EQ(e.number, 13) << bad;
        }
    }
}

TEST(Mid, ANegativeLengthIsAnInvalidCall) {
    EXPECT_EQ(text::mid("SYNCROabc", 7, 3), "abc");
    EXPECT_EQ(text::mid("SYNCRO", 7, 0), "");
    try {
        text::mid("ABC", 7, -3);
        FAIL();
    } catch (const RuntimeError& e) {
        EXPECT_EQ(e.number, 5);
        EXPECT_EQ(e.description(), "Invalid procedure call or argument");
    }
}
