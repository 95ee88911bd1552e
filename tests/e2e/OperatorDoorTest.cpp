// The operator's door from the command line, as the real executable runs it against a server
// in this process: kick, ban (kept in the ban file across restarts), unban, bans, and the allow
// lists of the settings file taking effect on reload.
#include "HostilePeers.h"
#include "server/AccessControl.h"
#include "support/CommandLineRun.h"
#include "support/Files.h"
#include "support/TestServer.h"

#include <QProcess>
#include <gmock/gmock.h>

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::StartsWith;

namespace {

// Connects and reports whether the server closed the connection at once.
bool turnedAway(quint16 port) {
    QTcpSocket socket;
    socket.connectToHost(QHostAddress::LocalHost, port);
    return pumpUntil([&] { return socket.state() == QAbstractSocket::UnconnectedState; }, 1500ms);
}

std::unique_ptr<Peer> registered(quint16 port, const std::string& command, const std::string& data = {}) {
    auto peer = std::make_unique<Peer>(port);
    peer->send(command, data);
    pumpFor(50ms);
    return peer;
}

const char* const kSettings = "[access]\nidle-grace = 0\n";

TEST(OperatorDoor, KickBanUnbanAndBansFromTheCommandLine) {
    TestServer ts{kIniLogOff, true, kSettings};
    auto alpha = registered(ts.playerPort(), "VALIDR", "ALPHA");
    auto watcher = registered(ts.playerPort(), "VALIDR", "WATCHER");
    auto awacs = registered(ts.awacsPort(), "NAWACS");
    watcher->settle(50ms);
    awacs->settle(50ms);

    // A kick is a leave: the others hear what a close would have told them.
    CommandLineRun run = runCommandLine(ts.dir(), {"kick", "player", "1"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_THAT(run.out, HasSubstr("Kicked player connection 1 (127.0.0.1:"));
    EXPECT_TRUE(alpha->waitForDisconnect());
    EXPECT_THAT(watcher->takeTexts(1), testing::ElementsAre("PLSDEL1"));
    EXPECT_THAT(awacs->takeTexts(1), testing::ElementsAre("DELCLT1"));
    EXPECT_EQ(runCommandLine(ts.dir(), {"kick", "player", "1"}).status, 1);
    EXPECT_EQ(runCommandLine(ts.dir(), {"kick", "player"}).status, 2);
    EXPECT_EQ(runCommandLine(ts.dir(), {"kick", "awacs", "1"}).status, 0);
    EXPECT_TRUE(awacs->waitForDisconnect());
    EXPECT_THAT(watcher->takeTexts(1), testing::ElementsAre("AWANUM0"));
    EXPECT_FALSE(ts.server().playerChannel().taken(1));

    // A ban ends the address's connections and refuses it on every port from then on.
    run = runCommandLine(ts.dir(), {"ban", "127.0.0.1", "--for", "1h", "--why", "testing the door"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_THAT(run.out, HasSubstr("Banned 127.0.0.1 until "));
    EXPECT_THAT(run.out, HasSubstr("1 connection(s) ended"));
    EXPECT_TRUE(watcher->waitForDisconnect());
    for (quint16 port : {ts.playerPort(), ts.awacsPort(), ts.simPort(), ts.aiSpyPort()})
        EXPECT_TRUE(turnedAway(port)) << port;
    run = runCommandLine(ts.dir(), {"bans"});
    EXPECT_THAT(run.out, HasSubstr("127.0.0.1"));
    EXPECT_THAT(run.out, HasSubstr("left)  testing the door"));
    EXPECT_THAT(ts.readFile("tessark-server.bans"), HasSubstr("\n127.0.0.1 until "));
    EXPECT_EQ(runCommandLine(ts.dir(), {"ban", "127.0.0.1/33"}).status, 2);
    EXPECT_EQ(runCommandLine(ts.dir(), {"ban", "127.0.0.1", "--for", "forever"}).status, 2);
    const QMap<QString, qint64> counts = ts.server().refusalCounts();
    EXPECT_EQ(counts.value("players/kicked"), 2); // ALPHA, then WATCHER through the ban
    EXPECT_EQ(counts.value("awacs/kicked"), 1);
    EXPECT_EQ(counts.value("players/banned"), 1);
    EXPECT_EQ(counts.value("ai-spy/banned"), 1);

    // Kept across a restart: a server started on the same ban file refuses it too.
    {
        TestServer next{kIniLogOff, false};
        next.writeFile("tessark-server.bans", ts.readFile("tessark-server.bans"));
        next.start();
        EXPECT_TRUE(turnedAway(next.playerPort()));
    }

    EXPECT_EQ(runCommandLine(ts.dir(), {"unban", "127.0.0.1"}).status, 0);
    EXPECT_EQ(runCommandLine(ts.dir(), {"unban", "127.0.0.1"}).status, 1);
    EXPECT_FALSE(turnedAway(ts.playerPort()));
    EXPECT_EQ(runCommandLine(ts.dir(), {"bans"}).out, "No bans.\n");
    EXPECT_EQ(ts.endsOfProgram(), 0);
}

TEST(OperatorDoor, AllowListsAndAHandEditedBanFileTakeEffectOnReload) {
    TestServer ts{kIniLogOff, true, kSettings};
    EXPECT_FALSE(turnedAway(ts.awacsPort()));

    // The AWACS port kept to a network this machine is not on; players still come.
    ts.writeFile("tessark-server.conf", std::string(kSettings) + "allow-awacs = 10.8.0.0/24, 192.0.2.7\n");
    EXPECT_EQ(runCommandLine(ts.dir(), {"reload"}).status, 0);
    EXPECT_TRUE(turnedAway(ts.awacsPort()));
    EXPECT_FALSE(turnedAway(ts.playerPort()));
    EXPECT_EQ(ts.server().refusalCounts().value("awacs/not-allowed"), 1);
    ts.writeFile("tessark-server.conf", std::string(kSettings) + "allow-awacs = 10.8.0.0/24 127.0.0.0/8\n");
    EXPECT_EQ(runCommandLine(ts.dir(), {"reload"}).status, 0);
    EXPECT_FALSE(turnedAway(ts.awacsPort()));

    // A damaged ban file: the lines that read still hold, the rest is passed over.
    ts.writeFile("tessark-server.bans",
                 "garbage\n\x01\x02\xff\n127.0.0.0/8 forever\n10.1.2.3 until yesterday\n" +
                     std::string(5000, 'x') + "\n");
    EXPECT_EQ(runCommandLine(ts.dir(), {"reload"}).status, 0);
    EXPECT_TRUE(turnedAway(ts.simPort()));
    EXPECT_THAT(runCommandLine(ts.dir(), {"bans"}).out, StartsWith("127.0.0.0/8"));
    EXPECT_EQ(runCommandLine(ts.dir(), {"unban", "127.0.0.0/8"}).status, 0);
    EXPECT_FALSE(turnedAway(ts.simPort()));
    // What the server writes back is the bans alone.
    EXPECT_THAT(ts.readFile("tessark-server.bans"), testing::Not(HasSubstr("garbage")));
    EXPECT_EQ(ts.endsOfProgram(), 0);
}

#ifndef Q_OS_WIN
// The ban file is written whole, never through a link put in its place.
TEST(OperatorDoor, ABanFileThatIsALinkIsNotWrittenThrough) {
    TestServer ts{kIniLogOff, true, kSettings};
    const QString target = ts.path("elsewhere.txt");
    writeFile(target, "precious\n");
    ASSERT_TRUE(QFile::link(target, ts.path("tessark-server.bans")));
    const CommandLineRun run = runCommandLine(ts.dir(), {"ban", "192.0.2.0/24"});
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.err, HasSubstr("could not be written"));
    EXPECT_EQ(readFile(target).toStdString(), "precious\n");
    EXPECT_THAT(runCommandLine(ts.dir(), {"bans"}).out, HasSubstr("192.0.2.0/24")); // it holds all the same
    // A reload does not take the file's word over the bans it could not keep.
    EXPECT_EQ(runCommandLine(ts.dir(), {"reload"}).status, 0);
    EXPECT_THAT(runCommandLine(ts.dir(), {"bans"}).out, HasSubstr("192.0.2.0/24"));
    EXPECT_EQ(readFile(target).toStdString(), "precious\n");

    // Once the file can be written, a ban with a reason longer than a line of it is kept whole
    // across a reload, its reason cut.
    ASSERT_TRUE(QFile::remove(ts.path("tessark-server.bans")));
    const QString longWhy(2000, QChar('w'));
    EXPECT_EQ(runCommandLine(ts.dir(), {"ban", "198.51.100.7", "--why", longWhy}).status, 0);
    EXPECT_EQ(runCommandLine(ts.dir(), {"reload"}).status, 0);
    const QString bans = QString::fromStdString(runCommandLine(ts.dir(), {"bans"}).out);
    EXPECT_TRUE(bans.contains("198.51.100.7")) << bans.toStdString();
    EXPECT_TRUE(bans.contains("192.0.2.0/24"));
    EXPECT_FALSE(bans.contains(longWhy));
}
#endif

} // namespace
