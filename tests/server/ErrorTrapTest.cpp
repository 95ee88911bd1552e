#include "net/Senders.h"
#include "server/ErrorTrap.h"
#include "server/VbList.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <regex>

namespace {
struct ErrorLogFixture : ::testing::Test {
    QTemporaryDir dir;
    QString path = dir.path() + "/TessarkSrvErrorLog.txt";
    int ends = 0;
    std::string contents() {
        QFile f(path);
        return f.open(QIODevice::ReadOnly) ? f.readAll().toStdString() : std::string();
    }
};
} // namespace

TEST_F(ErrorLogFixture, ASkippedStatementLetsTheRoutineGoOnAndTheLastErrorIsLogged) {
    ErrorLog log(path, true, [this] { ++ends; });
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
    std::regex line(R"(\d\d/\d\d/\d{4} - \d\d:\d\d:\d\d -/- Error at TskSrvForm1::Timer1_Timer - Error: 340 - )"
                    R"(Control array element '4' doesn't exist\r\n)");
    EXPECT_TRUE(std::regex_match(contents(), line)) << contents();
}

TEST_F(ErrorLogFixture, WithLoggingOffAnErrorIsClearedAndNothingIsWritten) {
    ErrorLog log(path, false, [this] { ++ends; });
    {
        ErrorTrap trap(log, "ParseData");
        trap([] { throw errors::invalidCall(); });
    }
    EXPECT_EQ(ends, 0);
    EXPECT_FALSE(QFile::exists(path));
}

TEST_F(ErrorLogFixture, SuccessiveErrorsAppendAndARoutineMayAddItsOwnDetail) {
    ErrorLog log(path, true, [this] { ++ends; });
    for (int i = 0; i < 2; ++i) {
        ErrorTrap trap(log, "AISPYTxtToAWACSTxt");
        trap([] { throw errors::subscriptOutOfRange(); });
        trap.settle("---L=15");
    }
    std::string text = contents();
    EXPECT_EQ(ends, 2);
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 2);
    EXPECT_NE(text.find("Error at TskSrvForm1::AISPYTxtToAWACSTxt - Error: 9 - Subscript out of range---L=15\r\n"),
              std::string::npos);
}

TEST(TrafficLine, JoinsThePiecesWithoutExtraBlanks) {
    std::regex sent(R"(\d\d/\d\d/\d{4} - \d\d:\d\d:\d\d : Command sent to Player #3: \(DISCON\))");
    EXPECT_TRUE(std::regex_match(trafficLine("Command sent to Player #", "3", "DISCON", ""), sent));
    std::string ai = trafficLine("Command sent to AIProcess ", "", "SYNCRO", "");
    EXPECT_EQ(ai.substr(ai.find(" : ")), " : Command sent to AIProcess : (SYNCRO)");
    std::string withData = trafficLine("Command arrived from Player #", "2", "VALIDR", "Ace@1");
    EXPECT_EQ(withData.substr(withData.find(" : ")), " : Command arrived from Player #2: (VALIDR)Ace@1");
}
