#include "basics/ErrorTrap.h"
#include "basics/VbList.h"
#include "support/Files.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <regex>

TEST(ErrorTrap, ASkippedStatementLetsTheRoutineGoOnTheLastErrorIsLoggedAndLoggingOffClearsIt) {
    QTemporaryDir dir;
    const QString path = dir.path() + "/TessarkSrvErrorLog.txt";
    int ends = 0;
    {
        ErrorLog off(path, false, [&] { ++ends; });
        ErrorTrap trap(off, "ParseData");
        trap([] { throw errors::invalidCall(); });
    }
    EXPECT_FALSE(QFile::exists(path));
    ErrorLog log(path, true, [&] { ++ends; });
    std::vector<int> ran;
    {
        ErrorTrap trap(log, "Timer1_Timer");
        VbList<int> list;
        trap([&] { list[3] = 1; }); // 9
        trap([&] { ran.push_back(1); });
        trap([&] { throw errors::elementMissing(4); }); // 340, the last one counts
        trap([&] { ran.push_back(2); });
        EXPECT_EQ(ends, 0); // nothing happens before the routine ends
    }
    EXPECT_EQ(ran, (std::vector<int>{1, 2}));
    EXPECT_EQ(ends, 1);
    const std::string contents = readFile(path).toStdString();
    std::regex line(
        R"(\d\d/\d\d/\d{4} - \d\d:\d\d:\d\d -/- Error at TskSrvForm1::Timer1_Timer - Error: 340 - )"
        R"(Control array element '4' doesn't exist\r\n)");
    EXPECT_TRUE(std::regex_match(contents, line)) << contents;
}
