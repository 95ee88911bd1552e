#include "basics/Text.h"

#include <gtest/gtest.h>

#include <functional>

namespace {
int errorNumber(const std::function<void()>& call) {
    try {
        call();
    } catch (const RuntimeError& e) {
        return e.number;
    }
    return 0;
}
} // namespace

TEST(LeadingNumber, ReadsTheLeadingNumberRoundsHalvesToEvenAndOverflowsOutside16Bits) {
    EXPECT_EQ(text::leadingNumber("  42abc"), 42);
    EXPECT_EQ(text::leadingNumber("-7@x"), -7);
    EXPECT_EQ(text::leadingNumber("abc"), 0);
    EXPECT_EQ(text::leadingNumber("."), 0);
    EXPECT_DOUBLE_EQ(text::leadingNumber("2.5kg"), 2.5);
    EXPECT_EQ(text::leadingInt16("2.5"), 2);
    EXPECT_EQ(text::leadingInt16("3.5"), 4);
    EXPECT_EQ(text::leadingInt16("-2.5"), -2);
    EXPECT_EQ(text::leadingInt16("2.51"), 3);
    EXPECT_EQ(text::leadingInt16("32767"), 32767);
    EXPECT_EQ(errorNumber([] { text::leadingInt16("32768"); }), 6);
    EXPECT_EQ(errorNumber([] { text::leadingInt16("99999999999999999999999"); }), 6);
}

TEST(StrictConversion, RefusesTextThatIsNotANumber) {
    EXPECT_EQ(text::strictInt32(" 12 "), 12);
    for (const char* bad : {"", "3x", "1 2", "-"})
        EXPECT_EQ(errorNumber([&] { text::strictInt32(bad); }), 13) << bad;
}
