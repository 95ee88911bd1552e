// The traffic and error logs against what a peer or the host can do to them: bytes that would
// forge lines, a disk that fills up.
#include "support/LogCapture.h"
#include "support/Peer.h"
#include "support/SmallDisk.h"
#include "support/TestServer.h"

#include <QRegularExpression>
#include <gmock/gmock.h>

using ::testing::HasSubstr;

namespace {

std::string logged(TestServer& ts) {
    ts.server().trafficLog().flush();
    return ts.readFile("TessarkSrvLog.txt");
}

TEST(TrafficLogOnAFaultyHost, APeersLineEndsAndControlBytesAreWrittenEscaped) {
    TestServer ts{kIniLogOn};
    Peer alpha(ts.playerPort());
    alpha.send("VALIDR",
               "Al\r\n01/01/2024 - 00:00:00 : Command sent to Player #9: (KICKED)\x1b[2J\tC:\\x\x7f");
    alpha.take(1);
    ASSERT_TRUE(pumpUntil([&] { return logged(ts).find("(PLSNEW)") != std::string::npos; }));

    const std::string log = logged(ts);
    const std::string shown =
        "Al\\x0d\\x0a01/01/2024 - 00:00:00 : Command sent to Player #9: (KICKED)\\x1b[2J\\x09C:\\x\\x7f";
    EXPECT_THAT(log, HasSubstr(": Command arrived from Player #1: (VALIDR)" + shown + "\r\n"));
    EXPECT_THAT(log, HasSubstr(": Command sent to Player #1: (PLSNEW)1@" + shown + "@@-\r\n"));
    // Two lines, each one event: nothing the peer sent made a line of its own.
    EXPECT_EQ(QString::fromStdString(log).split("\r\n", Qt::SkipEmptyParts).size(), 2);
    EXPECT_EQ(log.find("\n01/01/2024"), std::string::npos);
}

TEST(TrafficLogOnAFaultyHost, AFullDiskCostsTheLogItsLinesButNeitherTheServerNorItsWord) {
    SMALL_DISK(disk, 1024 * 1024);
    TestServer ts{kIniLogOn};
    LogCapture log;
    Peer alpha(ts.playerPort());
    alpha.send("VALIDR", "Alpha");
    alpha.take(1);
    disk.fill();

    for (int i = 0; i < 3000; ++i) {
        alpha.send("VLERRO", "line " + std::to_string(i));
        if (i % 500 == 0) ts.server().trafficLog().flush();
    }
    alpha.send("GETLST");
    EXPECT_EQ(alpha.take(4).size(), 4u); // still served
    ts.server().trafficLog().flush();
    EXPECT_EQ(log.count("the traffic log"), 1) << log.lines().join('\n').toStdString();
    EXPECT_EQ(log.count("cannot be written (No space left on device)"), 1);

    disk.release();
    alpha.send("VLERRO", "after");
    ASSERT_TRUE(pumpUntil([&] { return logged(ts).find("(VLERRO)after") != std::string::npos; }));
    EXPECT_EQ(log.count("is written again"), 1);
    const QString again = log.lines().filter("is written again").value(0);
    EXPECT_TRUE(QRegularExpression(R"(; [1-9]\d* lines were lost)").match(again).hasMatch())
        << again.toStdString();
    // Whole lines only: each one a time stamp and an event.
    const QStringList lines = QString::fromStdString(logged(ts)).split("\r\n");
    EXPECT_EQ(lines.last(), "");
    for (const QString& line : lines.mid(0, lines.size() - 1))
        EXPECT_TRUE(
            QRegularExpression(
                R"(^\d\d/\d\d/\d{4} - \d\d:\d\d:\d\d : Command (sent to|arrived from) Player #1: \([A-Z]{6}\))")
                .match(line)
                .hasMatch())
            << line.toStdString();

    // The run-time error that ends the server with logging on, on a disk that takes not even its
    // line: the operator's log says what the error was and that the error log did not get it.
    disk.fill();
    alpha.send("ERRRDM", "99999");
    ASSERT_TRUE(pumpUntil([&] { return ts.endsOfProgram() == 1; }));
    EXPECT_EQ(log.count("could not take the line"), 1) << log.lines().join('\n').toStdString();
    EXPECT_EQ(log.lines().filter("could not take the line").value(0).contains("Error: 6 - Overflow"), true);
}

} // namespace
