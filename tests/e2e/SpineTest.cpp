// The server's run as peers meet it: first start, keep-alive, shutdown, the error log, and a
// peer that never reads.
#include "support/Peer.h"
#include "support/TestServer.h"

#include <QFile>
#include <gmock/gmock.h>

TEST(Spine, TheKeepAliveReachesTheAiSpyAndIsLoggedOnceOverAFreshTrafficLog) {
    TestServer t(kIniLogOn, false);
    t.writeFile("TessarkSrvLog.txt", "an earlier run\r\n");
    t.start();
    Peer aiSpy(t.aiSpyPort());
    Peer unlisted(t.playerPort()); // connected but not registered: not on any list
    t.server().sendKeepAlive();
    EXPECT_EQ(aiSpy.take(1)[0].text(), "SYNCRO");
    EXPECT_TRUE(unlisted.settle().empty());
    t.server().trafficLog().flush();
    const std::string log = t.readFile("TessarkSrvLog.txt");
    ASSERT_GT(log.size(), 21u); // one line after the time stamp: the earlier run is gone
    EXPECT_EQ(log.substr(21), " : Command sent to AIProcess : (SYNCRO)\r\n");
}

TEST(Spine, ExitTellsTheAiSpyAndEveryConnectedPeerInOrder) {
    TestServer t(kIniLogOn);
    Peer aiSpy(t.aiSpyPort());
    Peer player1(t.playerPort()), player2(t.playerPort());
    Peer awacs(t.awacsPort()), sim(t.simPort());
    player1.close();                            // gone before the exit: nothing is sent to it
    EXPECT_FALSE(t.server().queryUnload(true)); // the close box only hides
    int finished = 0;
    QObject::connect(&t.server(), &Server::finished, [&] { ++finished; });

    t.server().exit();

    EXPECT_EQ(finished, 1);
    EXPECT_EQ(aiSpy.take(1)[0].text(), "CLOSE1");
    for (Peer* p : {&player2, &awacs, &sim}) {
        EXPECT_THAT(p->takeTexts(1), testing::ElementsAre("DISCON"));
        EXPECT_TRUE(p->waitForDisconnect());
    }
    EXPECT_EQ(t.display().trayEvents.back(), "remove");
    std::string log = t.readFile("TessarkSrvLog.txt");
    size_t close1 = log.find("Command sent to AIProcess : (CLOSE1)");
    size_t player = log.find("Command sent to Player #2: (DISCON)");
    size_t awacsAt = log.find("Command sent to AWACS Client #1: (DISCON)");
    ASSERT_NE(close1, std::string::npos);
    EXPECT_LT(close1, player);
    EXPECT_LT(player, awacsAt);
    EXPECT_LT(awacsAt, log.find("Command sent to SIM Client #1: (DISCON)"));
    EXPECT_EQ(log.find("Player #1: (DISCON)"), std::string::npos);
    QTcpSocket late; // the listeners are closed
    late.connectToHost(QHostAddress::LocalHost, t.playerPort());
    EXPECT_FALSE(late.waitForConnected(500));
}

TEST(Spine, WithLoggingOnALoneNulEndsTheProgramThroughTheErrorLog) {
    TestServer t(kIniLogOn);
    Peer player(t.playerPort());
    player.sendRaw(QByteArray(1, '\0'));
    ASSERT_TRUE(pumpUntil([&] { return t.endsOfProgram() > 0; }));
    const std::string errors = t.readFile("TessarkSrvErrorLog.txt");
    ASSERT_GT(errors.size(), 21u); // one line after the time stamp
    EXPECT_EQ(errors.substr(21),
              " -/- Error at TskSrvForm1::ParseData - Error: 5 - Invalid procedure call or argument\r\n");
}

TEST(Spine, AFirstStartHasTheDefaultSettingsAndNoLogsAndBadBytesOnAnyPortGetSilence) {
    TestServer t;
    EXPECT_EQ(t.readFile("tessark.ini"), "[SETUPLIST]\r\nNUM=0\r\n[DEBUG]\r\nLOG=0\r\n");
    EXPECT_EQ(t.server().keepAliveTimer().interval(), 10000);
    Peer aiSpy(t.aiSpyPort());
    std::vector<QByteArray> noise = {QByteArray(1, '\0'), QByteArray("ab\0\0x\0", 6),
                                     QByteArray(1 << 20, 'A'), QByteArray("\xff\xfe\x01\x80garbage\0", 13)};
    for (quint16 port : {t.playerPort(), t.awacsPort(), t.simPort()}) {
        Peer bad(port);
        for (const QByteArray& bytes : noise)
            bad.sendRaw(bytes);
        EXPECT_TRUE(bad.settle().empty());
        Peer vanishing(port);
        vanishing.socket().abort();
    }
    for (const QByteArray& bytes : noise)
        aiSpy.sendRaw(bytes);
    pumpFor(100ms);
    EXPECT_EQ(t.endsOfProgram(), 0);
    EXPECT_FALSE(QFile::exists(t.path("TessarkSrvLog.txt")));
    EXPECT_FALSE(QFile::exists(t.path("TessarkSrvErrorLog.txt")));
    t.server().sendKeepAlive();
    EXPECT_EQ(aiSpy.take(1)[0].text(), "SYNCRO"); // still served
}

TEST(Spine, APeerThatNeverReadsIsCappedWithoutHoldingUpOthersAndLaterGetsWholeMessagesInOrder) {
    TestServer t;
    QTcpSocket stalled; // slot 1: takes one byte and then reads nothing
    stalled.setReadBufferSize(1);
    stalled.connectToHost(QHostAddress::LocalHost, t.playerPort());
    ASSERT_TRUE(stalled.waitForConnected(1000));
    pumpFor(20ms);
    Peer reader(t.playerPort()); // slot 2
    const std::string padding(60000, 'x');
    for (int i = 0; i < 400; ++i) { // 24 MB towards a peer that reads nothing
        t.server().playerChannel().send("INDATA", std::to_string(i) + ":" + padding, 1);
        t.server().playerChannel().send("INDATA", std::to_string(i), 2);
        QCoreApplication::processEvents();
    }
    const qint64 queued = t.server().playerChannel().sockets().element(1).bytesQueued();
    EXPECT_GT(queued, SocketElement::kOutputCap / 2); // it really is stalled
    EXPECT_LE(queued, SocketElement::kOutputCap);
    ASSERT_TRUE(reader.waitFor(400));
    EXPECT_EQ(reader.inbox().back().text(), "INDATA399");

    // Reading again, it gets what was queued, each message whole and in order.
    stalled.setReadBufferSize(0);
    t.server().playerChannel().send("INDATA", "final", 1);
    QByteArray received;
    ASSERT_TRUE(pumpUntil(
        [&] { return (received += stalled.readAll()).endsWith(QByteArray("INDATAfinal", 12)); }, 10000ms));
    int previous = -1;
    for (const QByteArray& message : received.chopped(12).split('\0')) {
        if (message.isEmpty()) continue;
        const int n = message.mid(6, message.indexOf(':') - 6).toInt();
        EXPECT_GT(n, previous);
        EXPECT_EQ(message.size(), static_cast<qsizetype>(6 + std::to_string(n).size() + 1 + padding.size()));
        previous = n;
    }
    EXPECT_GT(previous, 0);
}
