#include "AiRecords.h"

#include <gtest/gtest.h>

using airecords::Parsed;

TEST(AiRecordsTest, RecordsHaveTheLayoutTheServerConverts) {
    const std::string update = airecords::buildUpdate(12, 345, 2, 987654);
    ASSERT_EQ(update.size(), 2 * airecords::kRecordChars);
    const std::string first = update.substr(0, airecords::kRecordChars);
    // Bottom up: altitude line, the 8-character middle line, the name line after a "*".
    EXPECT_EQ(first.substr(first.size() - 16), "FL 000000987654\n");
    EXPECT_NE(first.find("\n000/012K\n"), std::string::npos);
    EXPECT_NE(first.find("12*A010000345\r\n"), std::string::npos);
}

TEST(AiRecordsTest, ReadsWholeMergedAndBrokenConversions) {
    const std::string one = "A010000345000012000000987654", two = "A020000345000012000000987654";
    Parsed p = airecords::parseConverted(one + two, 2);
    EXPECT_EQ(p.outcome, Parsed::Whole);
    EXPECT_EQ(p.stream, 12);
    EXPECT_EQ(p.seq, 345u);
    EXPECT_EQ(p.sentAtUs, 987654u);

    EXPECT_EQ(airecords::parseConverted(one + two + "Typhoon.. 0rubbish", 2).outcome, Parsed::Merged);
    EXPECT_EQ(airecords::parseConverted(one, 2).outcome, Parsed::Corrupt);
    EXPECT_EQ(airecords::parseConverted(two + one, 2).outcome, Parsed::Corrupt);
    EXPECT_EQ(airecords::parseConverted("", 1).outcome, Parsed::Corrupt);
}
