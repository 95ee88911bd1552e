// The server's run as peers meet it: first start, keep-alive, shutdown, the error log, and a
// peer that never reads.
#include "support/Peer.h"
#include "support/TestServer.h"

#include <QFile>
#include <gtest/gtest.h>

using namespace std::string_literals;

namespace {

int countLines(const std::string& text, const std::string& needle) {
    int n = 0;
    for (size_t at = text.find(needle); at != std::string::npos; at = text.find(needle, at + 1)) ++n;
    return n;
}
} // namespace

TEST(Spine, AFirstStartCreatesTheSettingsWithTheirDefaultsAndNoLogs) {
    TestServer t;
    EXPECT_EQ(t.readFile("tessark.ini"), "[SETUPLIST]\r\nNUM=0\r\n[DEBUG]\r\nLOG=0\r\n");
    EXPECT_FALSE(t.server().logOn());
    EXPECT_FALSE(QFile::exists(t.path("TessarkSrvLog.txt")));
    EXPECT_FALSE(QFile::exists(t.path("TessarkSrvErrorLog.txt")));
    EXPECT_EQ(t.display().awacsCount, "0");
    EXPECT_EQ(t.display().simCount, "0");
    EXPECT_TRUE(t.server().keepAliveTimer().isActive());
    EXPECT_EQ(t.server().keepAliveTimer().interval(), 10000);
    for (quint16 port : {t.playerPort(), t.awacsPort(), t.simPort(), t.aiSpyPort()}) {
        Peer peer(port);
        EXPECT_TRUE(peer.isConnected());
    }
}

TEST(Spine, LoggingOnTruncatesTheTrafficLogAndLogsTheKeepAliveEvenWithNobodyConnected) {
    TestServer t(kIniLogOn, false);
    t.writeFile("TessarkSrvLog.txt", "an earlier run\r\n");
    t.start();
    EXPECT_TRUE(t.server().logOn());
    t.server().Timer1_Timer();
    t.server().trafficLog().flush();
    std::string log = t.readFile("TessarkSrvLog.txt");
    EXPECT_EQ(log.find("an earlier run"), std::string::npos);
    EXPECT_EQ(countLines(log, " : Command sent to AIProcess : (SYNCRO)\r\n"), 1);
}

TEST(Spine, TheKeepAliveReachesTheAiSpy) {
    TestServer t;
    Peer aiSpy(t.aiSpyPort());
    Peer unlisted(t.playerPort()); // connected but not registered: not on any list
    ASSERT_TRUE(t.display().aiSpyConnected);
    t.server().Timer1_Timer();
    EXPECT_EQ(aiSpy.take(1)[0].command, "SYNCRO");
    EXPECT_TRUE(unlisted.settle().empty());
}

TEST(Spine, ExitTellsTheAiSpyAndEveryConnectedPeerInOrder) {
    TestServer t(kIniLogOn);
    Peer aiSpy(t.aiSpyPort());
    Peer player1(t.playerPort()), player2(t.playerPort());
    Peer awacs(t.awacsPort()), sim(t.simPort());
    player1.close(); // gone before the exit: nothing is sent to it
    int finished = 0;
    QObject::connect(&t.server(), &Server::finished, [&] { ++finished; });

    t.server().exit();

    EXPECT_EQ(finished, 1);
    EXPECT_EQ(aiSpy.take(1)[0].text(), "CLOSE1");
    for (Peer* p : {&player2, &awacs, &sim}) {
        auto got = p->take(1);
        ASSERT_EQ(got.size(), 1u);
        EXPECT_EQ(got[0].text(), "DISCON");
        EXPECT_TRUE(p->waitForDisconnect());
    }
    EXPECT_EQ(t.display().trayEvents.back(), "remove");
    EXPECT_EQ(t.display().unloadOtherFormsCalls, 1);
    std::string log = t.readFile("TessarkSrvLog.txt");
    size_t close1 = log.find("Command sent to AIProcess : (CLOSE1)");
    size_t discon = log.find("Command sent to Player #2: (DISCON)");
    ASSERT_NE(close1, std::string::npos);
    ASSERT_NE(discon, std::string::npos);
    EXPECT_LT(close1, discon);
    EXPECT_LT(discon, log.find("Command sent to AWACS Client #1: (DISCON)"));
    EXPECT_LT(log.find("Command sent to AWACS Client #1: (DISCON)"), log.find("Command sent to SIM Client #1: (DISCON)"));
    // The listeners are closed: nobody can connect any more.
    QTcpSocket late;
    late.connectToHost(QHostAddress::LocalHost, t.playerPort());
    EXPECT_FALSE(late.waitForConnected(500));
}

TEST(Spine, TheCloseBoxOnlyHides) {
    TestServer t;
    Peer aiSpy(t.aiSpyPort());
    EXPECT_FALSE(t.server().queryUnload(true));
    EXPECT_TRUE(aiSpy.settle().empty());
    EXPECT_TRUE(t.server().keepAliveTimer().isActive());
}

TEST(Spine, WithLoggingOnALoneNulEndsTheProgramThroughTheErrorLog) {
    TestServer t(kIniLogOn);
    Peer player(t.playerPort());
    player.sendRaw(QByteArray(1, '\0'));
    ASSERT_TRUE(pumpUntil([&] { return t.endsOfProgram() > 0; }));
    std::string errors = t.readFile("TessarkSrvErrorLog.txt");
    EXPECT_EQ(countLines(errors, "\r\n"), 1);
    EXPECT_NE(errors.find(" -/- Error at TskSrvForm1::ParseData - Error: 5 - Invalid procedure call or argument\r\n"),
              std::string::npos)
        << errors;
}

TEST(Spine, WithLoggingOffBadBytesOnAnyPortGetSilenceAndTheServerStaysUp) {
    TestServer t;
    Peer aiSpy(t.aiSpyPort());
    std::vector<QByteArray> noise = {QByteArray(1, '\0'), QByteArray("ab\0\0x\0", 6), QByteArray(1 << 20, 'A'),
                                     QByteArray("\xff\xfe\x01\x80garbage\0", 13)};
    for (quint16 port : {t.playerPort(), t.awacsPort(), t.simPort()}) {
        Peer bad(port);
        for (const QByteArray& bytes : noise) bad.sendRaw(bytes);
        EXPECT_TRUE(bad.settle().empty());
        Peer vanishing(port);
        vanishing.socket().abort();
    }
    for (const QByteArray& bytes : noise) aiSpy.sendRaw(bytes);
    pumpFor(100ms);
    EXPECT_EQ(t.endsOfProgram(), 0);
    EXPECT_FALSE(QFile::exists(t.path("TessarkSrvErrorLog.txt")));
    t.server().Timer1_Timer();
    EXPECT_EQ(aiSpy.take(1)[0].text(), "SYNCRO"); // still served
}

TEST(Spine, APeerThatNeverReadsCannotGrowTheServerNorHoldUpOthers) {
    TestServer t;
    QTcpSocket stalled; // slot 1: takes one byte and then reads nothing
    stalled.setReadBufferSize(1);
    stalled.connectToHost(QHostAddress::LocalHost, t.playerPort());
    ASSERT_TRUE(stalled.waitForConnected(1000));
    pumpFor(20ms);
    Peer reader(t.playerPort()); // slot 2
    const std::string data(60000, 'x');
    for (int i = 0; i < 400; ++i) { // 24 MB towards a peer that reads nothing
        t.server().senders().SendCommand("INDATA", data, 1);
        t.server().senders().SendCommand("INDATA", std::to_string(i), 2);
        QCoreApplication::processEvents();
    }
    const qint64 queued = t.server().WS1().element(1).bytesQueued();
    EXPECT_GT(queued, SocketElement::kOutputCap / 2); // it really is stalled
    EXPECT_LE(queued, SocketElement::kOutputCap);
    ASSERT_TRUE(reader.waitFor(400));
    EXPECT_EQ(reader.inbox().back().text(), "INDATA399");
}
