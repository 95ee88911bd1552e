#include "relay/AiSpyText.h"

#include <QFile>
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
    EXPECT_EQ(convert(aircraft("1*ABCDEFGHIJ")).text, "ABCDEFGHIJ270015350");
    EXPECT_EQ(convert(record({"\rAI", "12*VI\rPER1\r", "27\r0/15K", "FL 3\r50\r"})).text,
              "VIPER1    270015350");
}

TEST(AiSpyText, RecordCountRoundsHalvesToEven) {
    const std::string one = aircraft("1*ONE");
    const std::string shortOne = record({"x", "1*TWO", "111/2K", "A  9"}, 30);
    EXPECT_EQ(convert("").text, "");
    EXPECT_EQ(convert(std::string(30, 'x')).text, ""); // 0.5 records: none
    // 90 characters are 2 records, the second only 30 long.
    EXPECT_EQ(convert(one + shortOne).text, "ONE       270015350TWO       11100209");
    // 150 characters are 2.5 records, which rounds to 2: the last 30 are never read.
    EXPECT_EQ(convert(one + one + shortOne).text, "ONE       270015350ONE       270015350");
    // 210 characters are 3.5 records, which rounds to 4.
    EXPECT_EQ(convert(one + one + one + shortOne).text,
              "ONE       270015350ONE       270015350ONE       270015350TWO       11100209");
}

TEST(AiSpyText, NameCarriesOverFromThePreviousRecordOfTheSameCall) {
    EXPECT_EQ(convert(aircraft("1*EAGLE") + aircraft("no star")).text,
              "EAGLE     270015350EAGLE     270015350");
    // A first record without a name has ten blanks; each call starts afresh.
    EXPECT_EQ(convert(aircraft("no star")).text, "          270015350");
    convert(aircraft("1*EAGLE"));
    EXPECT_EQ(convert(aircraft("no star")).text, "          270015350");
}

TEST(AiSpyText, NameIsOnLineFourWhenLineThreeIsATypeLine) {
    EXPECT_EQ(convert(record({"1*COBRA", "Typ F16", "090/7K", "A  5"})).text, "COBRA     09000705");
    // A type line with nothing above it: that statement fails, the name stays as it was,
    // and the record still gives its other fields.
    Converted c = convert(aircraft("1*HAWK") + record({"Typ F16", "090/7K", "A  5"}, 60));
    EXPECT_EQ(c.text, "HAWK      270015350HAWK      09000705");
    EXPECT_TRUE(c.failed);
    EXPECT_EQ(c.step, 14);
}

TEST(AiSpyText, LineTwoLengthTable) {
    struct Case {
        std::string line2, field;
    };
    const std::vector<Case> cases = {
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
    for (const Case& c : cases)
        EXPECT_EQ(convert(aircraft("1*X", c.line2, "A  7")).text, "X         " + c.field + "07") << c.line2;
    // An empty line 2 adds nothing either.
    EXPECT_EQ(convert(aircraft("1*X", "", "A  7")).text, "X         07");
}

TEST(AiSpyText, LineOneRule) {
    EXPECT_EQ(convert(aircraft("1*X", "", "ALT5")).text, "X         05");
    EXPECT_EQ(convert(aircraft("1*X", "", "ALT  5   ")).text, "X         05");
    EXPECT_EQ(convert(aircraft("1*X", "", "ALT350")).text, "X         350");
    EXPECT_EQ(convert(aircraft("1*X", "", "ALT 12 5 ")).text, "X         12 5");
    EXPECT_EQ(convert(aircraft("1*X", "", "ALT   ")).text, "X         ");
    EXPECT_EQ(convert(aircraft("1*X", "", "AL")).text, "X         ");
}

TEST(AiSpyText, RecordsWithFewerThanThreeLinesGiveNothing) {
    EXPECT_EQ(convert(record({"1*SOLO", "FL 350"})).text, "");
    EXPECT_EQ(convert(record({"no line feed at all"})).text, "");
    // The last character is never read, so a LF there does not make a line.
    std::string twoLines = record({"1*SOLO", "FL 350"});
    twoLines.back() = '\n';
    EXPECT_EQ(convert(twoLines + aircraft("1*NEXT")).text, "NEXT      270015350");
}

TEST(AiSpyText, FailuresReachTheErrorLogWithTheStepMarker) {
    QTemporaryDir dir;
    int ends = 0;
    ErrorLog log(dir.filePath("err.txt"), true, [&] { ++ends; });
    EXPECT_EQ(AISPYTxtToAWACSTxt(aircraft("1*OK"), log), "OK        270015350");
    EXPECT_EQ(ends, 0);

    EXPECT_EQ(AISPYTxtToAWACSTxt(record({"Typ F16", "090/7K", "A  5"}), log), "          09000705");
    EXPECT_EQ(ends, 1);
    // Too many records for a 16-bit count: nothing is converted.
    EXPECT_EQ(AISPYTxtToAWACSTxt(std::string(1966050, 'x'), log), "");
    EXPECT_EQ(ends, 2);

    QFile file(dir.filePath("err.txt"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QString lines = QString::fromLatin1(file.readAll());
    EXPECT_TRUE(lines.contains(
        "Error at TskSrvForm1::AISPYTxtToAWACSTxt - Error: 9 - Subscript out of range---L=14\r\n"))
        << lines.toStdString();
    EXPECT_TRUE(lines.contains("Error at TskSrvForm1::AISPYTxtToAWACSTxt - Error: 6 - Overflow---L=0\r\n"))
        << lines.toStdString();
}

TEST(AiSpyText, LargeAndShapelessInputIsConvertedWithoutFailing) {
    EXPECT_FALSE(convert(std::string(1 << 20, '\r')).failed);
    EXPECT_EQ(convert(std::string(1 << 20, '\n')).text.size(), 17476u * 10); // nameless, empty fields
    std::string many;
    for (int i = 0; i < 1000; ++i)
        many += aircraft("1*BANDIT");
    EXPECT_EQ(convert(many).text.size(), 1000u * 19);
}

} // namespace
