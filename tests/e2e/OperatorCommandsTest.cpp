// The operator's command line, as the real executable runs it, against a server running in this
// process on free ports (reached over its control channel) and against a directory with no
// server at all.
#include "server/Server.h"
#include "support/CommandLineRun.h"
#include "support/FakeInstallation.h"
#include "support/Files.h"
#include "support/Peer.h"
#include "support/TestServer.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <gmock/gmock.h>

using ::testing::HasSubstr;

namespace {

const char* const kEvening = "Evening\r\nCURSET@BMS\r\nCURTHE@Korea\r\n";

TEST(OperatorCommands, StatusShowsThePlayersMarksSetupsGoThroughTheServerAndExitShutsDownAsTheMenuDoes) {
    TestServer ts{kIniLogOff};
    QSignalSpy finished(&ts.server(), &Server::finished);
    Peer alpha(ts.playerPort());
    alpha.send("VALIDR", "Alpha");
    expectNext(alpha, {"PLSNEW|1@Alpha@@-"});
    CommandLineRun run = runCommandLine(ts.dir(), {"status"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_THAT(run.out, HasSubstr("Players: 1\n"));
    EXPECT_THAT(run.out, HasSubstr("not verified Alpha ()"));
    EXPECT_THAT(run.out, HasSubstr("AWACS clients: 0\nSIM clients: 0\nAI Spy: not connected\n"));
    EXPECT_THAT(run.out, HasSubstr("127.0.0.1:"));
    EXPECT_THAT(run.out, HasSubstr("dropped 0"));

    alpha.send("VERFOK", "");
    expectNext(alpha, {"PLSUPD|1@Alpha@@O"});
    EXPECT_THAT(runCommandLine(ts.dir(), {"status"}).out, HasSubstr("verified     Alpha ()"));
    alpha.send("VERNOK", "");
    expectNext(alpha, {"PLSUPD|1@Alpha@@X"});
    Peer awacs(ts.awacsPort());
    awacs.send("NAWACS", "");
    expectNext(alpha, {"AWANUM|1"});
    run = runCommandLine(ts.dir(), {"status"});
    EXPECT_THAT(run.out, HasSubstr("failed       Alpha ()"));
    EXPECT_THAT(run.out, HasSubstr("AWACS clients: 1\n"));
    EXPECT_THAT(run.out, HasSubstr("AWACS client 1"));

    run = runCommandLine(ts.dir(), {"status", "now"});
    EXPECT_EQ(run.status, 2);
    EXPECT_THAT(run.err, HasSubstr("Unknown command"));

    // Setups go through the running server, so players are offered what it says.
    QTemporaryDir elsewhere;
    run = runCommandLine(ts.dir(),
                         {"setups", "import", writeFile(elsewhere.path() + "/evening.stp", kEvening)});
    EXPECT_EQ(run.status, 0) << run.err;
    alpha.send("GETVLA", "");
    expectNext(alpha, {"PLSUPD|1@Alpha@@-", "SLRDIM|1", "SLSADD|1@Evening", "SLDONE|"});
    EXPECT_THAT(runCommandLine(ts.dir(), {"setups", "list"}).out, HasSubstr("Evening"));

    const std::string ini = ts.readFile("tessark.ini");
    run = runCommandLine(ts.dir(), {"setups", "remove", "2"});
    EXPECT_EQ(run.status, 2);
    EXPECT_FALSE(run.err.empty());
    EXPECT_EQ(ts.readFile("tessark.ini"), ini);

    EXPECT_EQ(runCommandLine(ts.dir(), {"setups", "remove", "1"}).status, 0);
    alpha.send("GETVLA", "");
    expectNext(alpha, {"PLSUPD|1@Alpha@@-", "SLRDIM|0", "SLDONE|"});

    // Exit ends the server as the menu does; nobody listens in the directory any more.
    run = runCommandLine(ts.dir(), {"exit"});
    EXPECT_EQ(run.status, 0) << run.err;
    ASSERT_TRUE(pumpUntil([&] { return finished.count() == 1; }));
    EXPECT_TRUE(alpha.waitFor(1));
    EXPECT_EQ(alpha.inbox().back().text(), "DISCON");
    EXPECT_EQ(runCommandLine(ts.dir(), {"status"}).status, 3);
}

// A name is whatever a stranger sent: on the operator's terminal it must not rewrite the lines
// above (CR, cursor moves), retitle the window or write the clipboard (OSC 52).
TEST(OperatorCommands, StatusShowsAPeersControlBytesEscapedAndJsonKeepsTheNameWhole) {
    TestServer ts{kIniLogOff};
    const std::string name =
        "Mallory\r\x1b[1A\x1b[2Kverified     Boss\x1b]0;owned\x07\x1b]52;c;cm0gLXJm\x07\x7f";
    Peer mallory(ts.playerPort());
    mallory.send("VALIDR", name);
    mallory.take(1);

    const CommandLineRun text = runCommandLine(ts.dir(), {"status"});
    ASSERT_EQ(text.status, 0) << text.err;
    for (char c : text.out)
        EXPECT_TRUE(c == '\n' || (static_cast<unsigned char>(c) >= 0x20 && c != 0x7f))
            << "raw byte " << static_cast<int>(static_cast<unsigned char>(c)) << " in:\n"
            << text.out;
    EXPECT_THAT(text.out, HasSubstr("Mallory\\x0d\\x1b[1A\\x1b[2Kverified"));

    const CommandLineRun json = runCommandLine(ts.dir(), {"status", "--json"});
    ASSERT_EQ(json.status, 0) << json.err;
    EXPECT_EQ(json.out.find('\x1b'), std::string::npos);
    const QJsonArray players = QJsonDocument::fromJson(json.out.c_str()).object()["players"].toArray();
    ASSERT_EQ(players.size(), 1);
    EXPECT_EQ(players[0].toObject()["name"].toString().toStdString(), name);
}

TEST(OperatorCommands, WithNoServerStatusSaysSoAndSetupsWorkOnTheDirectory) {
    QTemporaryDir dir;
    const QString programDir = dir.path() + "/";
    CommandLineRun run = runCommandLine(programDir, {"status"});
    EXPECT_EQ(run.status, 3);
    EXPECT_THAT(run.err, HasSubstr("No Tessark Server is running"));
    EXPECT_EQ(runCommandLine(programDir, {"exit"}).status, 3);

    run = runCommandLine(programDir,
                         {"setups", "import", writeFile(programDir + "evening-copy.stp", kEvening)});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_THAT(runCommandLine(programDir, {"setups", "list"}).out, HasSubstr("Evening"));
    EXPECT_EQ(runCommandLine(programDir, {"setups", "frobnicate"}).status, 2);
}

#ifndef Q_OS_WIN
// Linux: the installation is a Wine prefix of the test's own (on Windows it is the machine's
// registry, which the discovery and wizard tests hold under a lock of their room).
TEST(OperatorCommands, CreateAndVerifyCheckThisMachinesInstallationWithAndWithoutAServer) {
    FakeInstallation falcon;
    falcon.install("cobra.cfg", "set g_bFoo 1\r\n");
    falcon.install("Data/a.dat", "123456789");

    TestServer ts{kIniLogOff};
    CommandLineRun run = runCommandLine(
        ts.dir(), {"setups", "create", "--name", "Evening", "--file", "data/a.dat", "--config", "g_bFoo"});
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(ts.readFile("Evening.stp"),
              "Evening\r\nCURSET@COB\r\nCURTHE@Korea KTO\r\nCHKSUM@Data\\a.dat@-873187034\r\n"
              "CONFIG@g_bFoo@1\r\n");
    EXPECT_EQ(runCommandLine(ts.dir(), {"setups", "verify", "1"}).status, 0);
    // The players are offered it at once.
    Peer alpha(ts.playerPort());
    alpha.send("GETVLA", "");
    expectNext(alpha, {"SLRDIM|1", "SLSADD|1@Evening", "SLDONE|"});

    falcon.install("Data/a.dat", "changed");
    run = runCommandLine(ts.dir(), {"setups", "verify", "1"});
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.out, HasSubstr("The Data\\a.dat file is differrent or absent"));
    run = runCommandLine(ts.dir(), {"setups", "create", "--name", "Evening", "--config", "g_bNone"});
    EXPECT_EQ(run.status, 2);
    EXPECT_THAT(run.err, HasSubstr("g_bNone"));

    // The same directory with its server gone: the commands work on the files themselves.
    ts.server().exit();
    EXPECT_EQ(runCommandLine(ts.dir(), {"status"}).status, 3);
    falcon.install("Data/a.dat", "123456789");
    EXPECT_EQ(runCommandLine(ts.dir(), {"setups", "verify", "1"}).status, 0);
    EXPECT_EQ(runCommandLine(ts.dir(), {"setups", "verify", "2"}).status, 2);
}
#endif

} // namespace
