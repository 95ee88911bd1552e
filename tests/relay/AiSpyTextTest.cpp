#include "relay/AiSpyText.h"
#include "support/Files.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

// One record of exactly `length` characters: the lines top to bottom, LF-separated, the
// bottom line padded with blanks (which its value loses when trimmed), and a last character
// that the conversion never reads.
std::string record(const std::vector<std::string>& topToBottom, size_t length = 60) {
    std::string body;
    for (size_t i = 0; i < topToBottom.size(); ++i)
        body += (i ? "\n" : "") + topToBottom[i];
    EXPECT_LT(body.size(), length) << "test record too long";
    return body + std::string(length - body.size() - 1, ' ') + '#';
}

std::string aircraft(const std::string& nameLine, const std::string& line2 = "270/15K",
                     const std::string& line1 = "FL 350") {
    return record({"AI", nameLine, line2, line1});
}

struct Converted {
    std::string text;
    bool failed;
    int16_t step;
};

Converted convert(std::string_view input) {
    ErrorLog off(QString(), false, {});
    ErrorTrap trap(off, "AISPYTxtToAWACSTxt");
    AwacsTextResult r = convertAiSpyText(input, trap);
    return {r.text, trap.pending(), r.failedAtStep};
}

TEST(AiSpyText, OneAircraftBecomesNameSpeedAndAltitudeFields) {
    EXPECT_EQ(convert(aircraft("12*VIPER1")).text, "VIPER1    270015350");
    // "*"s after the first are dropped, a long name is cut to 10, CRs are ignored anywhere.
    EXPECT_EQ(convert(aircraft("3*VI*PER1")).text, "VIPER1    270015350");
    EXPECT_EQ(convert(aircraft("1*ABCDEFGHIJKL")).text, "ABCDEFGHIJ270015350");
    EXPECT_EQ(convert(record({"\rAI", "12*VI\rPER1\r", "27\r0/15K", "FL 3\r50\r"})).text,
              "VIPER1    270015350");
    // Fewer than three lines give nothing; the unread last character does not make a line.
    std::string twoLines = record({"1*SOLO", "FL 350"});
    EXPECT_EQ(convert(twoLines).text, "");
    twoLines.back() = '\n';
    EXPECT_EQ(convert(twoLines + aircraft("1*NEXT")).text, "NEXT      270015350");
}

TEST(AiSpyText, RecordCountRoundsHalvesToEven) {
    const std::string one = aircraft("1*ONE");
    const std::string shortOne = record({"x", "1*TWO", "111/2K", "A  9"}, 30);
    EXPECT_EQ(convert(std::string(30, 'x')).text, ""); // 0.5 records: none
    // 150 characters are 2.5 records, which rounds to 2: the last 30 are never read.
    EXPECT_EQ(convert(one + one + shortOne).text, "ONE       270015350ONE       270015350");
    // 210 characters are 3.5 records, which rounds to 4, the last only 30 long.
    EXPECT_EQ(convert(one + one + one + shortOne).text,
              "ONE       270015350ONE       270015350ONE       270015350TWO       11100209");
}

TEST(AiSpyText, NameCarriesOverWithinACallAndSitsOnLineFourUnderATypeLine) {
    EXPECT_EQ(convert(aircraft("1*EAGLE") + aircraft("no star")).text,
              "EAGLE     270015350EAGLE     270015350");
    // A first record without a name has ten blanks; each call starts afresh.
    EXPECT_EQ(convert(aircraft("no star")).text, "          270015350");
    EXPECT_EQ(convert(record({"1*COBRA", "Typ F16", "090/7K", "A  5"})).text, "COBRA     09000705");
    // A type line with nothing above it: that statement fails, the name stays as it was,
    // and the record still gives its other fields.
    Converted c = convert(aircraft("1*HAWK") + record({"Typ F16", "090/7K", "A  5"}, 60));
    EXPECT_EQ(c.text, "HAWK      270015350HAWK      09000705");
    EXPECT_TRUE(c.failed);
    EXPECT_EQ(c.step, 14);
}

TEST(AiSpyText, LineTwoByLengthAndLineOneAfterItsFirstThreeCharacters) {
    const std::vector<std::pair<std::string, std::string>> line2s = {
        {"", ""},
        {"12345", ""},
        {"270/5K", "270005"},
        {"270/15K", "270015"},
        {"270/150K", "270150"},
        {"270/1500K", ""},
        {"SPD 270/5K", "270005"},
        {"SPD 270/15K", "270015"},
        {"SPD 270/150K", "270150"},
        {"SPD 270/1500K", ""},
    };
    for (const auto& [line2, field] : line2s)
        EXPECT_EQ(convert(aircraft("1*X", line2, "A  7")).text, "X         " + field + "07") << line2;
    const std::vector<std::pair<std::string, std::string>> line1s = {
        {"ALT5", "05"}, {"ALT  5   ", "05"}, {"ALT350", "350"}, {"ALT 12 5 ", "12 5"}, {"AL", ""},
    };
    for (const auto& [line1, field] : line1s)
        EXPECT_EQ(convert(aircraft("1*X", "", line1)).text, "X         " + field) << line1;
}

TEST(AiSpyText, FailuresReachTheErrorLogWithTheStepMarker) {
    QTemporaryDir dir;
    int ends = 0;
    ErrorLog log(dir.filePath("err.txt"), true, [&] { ++ends; });
    EXPECT_EQ(aiTrafficText(record({"Typ F16", "090/7K", "A  5"}), log), "          09000705");
    // Too many records for a 16-bit count: nothing is converted.
    EXPECT_EQ(aiTrafficText(std::string(1966050, 'x'), log), "");
    EXPECT_EQ(ends, 2);
    const std::string lines = readFile(dir.filePath("err.txt")).toStdString();
    EXPECT_NE(
        lines.find("Error at TskSrvForm1::AISPYTxtToAWACSTxt - Error: 9 - Subscript out of range---L=14\r\n"),
        std::string::npos)
        << lines;
    EXPECT_NE(lines.find("Error at TskSrvForm1::AISPYTxtToAWACSTxt - Error: 6 - Overflow---L=0\r\n"),
              std::string::npos)
        << lines;
}

} // namespace
