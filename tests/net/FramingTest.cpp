#include "net/Framing.h"

#include <gtest/gtest.h>

#include <string>

using namespace std::string_literals;

namespace {
// What one arrival parsed into, as "COMMAND|data;" for each message (the records view the bytes,
// so they are read here, while the bytes are alive).
struct Parsed {
    std::string text;
    int count = 0;
    bool errorPending = false;
    std::string commands() const { return text; }
};
Parsed parse(const std::string& bytes, bool ai = false) {
    ErrorLog log("unused", false, {});
    ErrorTrap trap(log, "ParseData");
    const MessageList list = ai ? splitAiArrival(bytes, trap) : splitArrival(bytes, trap);
    Parsed parsed;
    for (int i = 1; i <= list.ubound(); ++i)
        parsed.text += std::string(list[i].command) + "|" + std::string(list[i].data) + ";";
    parsed.count = list.ubound();
    parsed.errorPending = trap.pending();
    return parsed;
}
} // namespace

TEST(Framing, SplitsAtEveryNulAndDropsWhatFollowsTheLast) {
    EXPECT_EQ(parse("SYNCRO\0VERFOKabc\0"s).commands(), "SYNCRO|;VERFOK|abc;");
    EXPECT_FALSE(parse("SYNCRO\0VERFOKabc\0"s).errorPending);
    EXPECT_EQ(parse("VERFOKab").commands(), "");
    EXPECT_EQ(parse("F4LOCA1\0F4LOC"s).commands(), "F4LOCA|1;");
    // The tail of a split message reads as a message of its own.
    EXPECT_EQ(parse("A2@3\0"s).commands(), "A2@3|;");
}

TEST(Framing, AMessageTooLongToKeepIsDroppedWholeAndTheNextOneStands) {
    const std::string tooLong = "VALIDR" + std::string(kMaxMessageBytes, 'x');
    const std::string longest = "VALIDR" + std::string(kMaxMessageBytes - 6, 'y');
    EXPECT_EQ(parse(tooLong + "\0SYNCRO\0"s).commands(), "SYNCRO|;");
    EXPECT_EQ(parse(longest + "\0"s).count, 1);
}

TEST(Framing, ShortMessagesKeepAShortCommandAndLeaveAnErrorPendingWhileTheBatchGoesOn) {
    Parsed p = parse("ABC\0\0SYNCRO\0"s);
    EXPECT_EQ(p.commands(), "ABC|;|;SYNCRO|;");
    EXPECT_TRUE(p.errorPending);
    EXPECT_TRUE(parse("\0"s).errorPending);
}

TEST(Framing, TheAiSpyArrivalIsOneCommandNulsIncluded) {
    EXPECT_EQ(parse("AIUPDTxyz\0"s, true).commands(), "AIUPDT|xyz\0;"s);
    Parsed shortOne = parse("AIU", true);
    EXPECT_EQ(shortOne.commands(), "AIU|;");
    EXPECT_TRUE(shortOne.errorPending);
}
