// The real executable, copied into an empty program directory and started headless, as an
// operator would run it. It listens on the production ports.
// Windows has no headless mode and no SIGTERM: there the server runs with its window (on a
// screen that draws nothing) and is stopped by the end of the Windows session or Ctrl+C.
#include "RealServer.h"
#include "WindowsSession.h"

#include <gtest/gtest.h>

#include <functional>

namespace {

// A server with a peer on each port asked to stop: "CLOSE1" to the AI Spy, "DISCON" to every
// peer, a normal end with status 0, and no logs written with logging off.
void expectOrderlyEnd(RealServer& server, QProcess& process, Peer& aiSpy, const std::function<void()>& stop) {
    Peer player(5555), awacs(5556), sim(5557);
    stop();
    EXPECT_EQ(aiSpy.take(1).at(0).text(), "CLOSE1");
    for (Peer* peer : {&player, &awacs, &sim})
        EXPECT_EQ(peer->take(1).at(0).text(), "DISCON");
    ASSERT_TRUE(hasEnded(process));
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(process.exitCode(), 0);
    EXPECT_FALSE(QFile::exists(server.file("TessarkSrvLog.txt")));
    EXPECT_FALSE(QFile::exists(server.file("TessarkSrvErrorLog.txt")));
}

} // namespace

#if !defined(_WIN32)
#include <sys/resource.h>
#endif

#ifndef Q_OS_WIN
TEST(RealServer, StartsHeadlessRefusesASecondCopyAndShutsDownOnSigterm) {
    RealServer server;
    QProcess first;
    server.start(first);
    auto aiSpy = RealServer::connectAiSpy();
    ASSERT_TRUE(aiSpy);
    EXPECT_EQ(server.read("tessark.ini"), "[SETUPLIST]\r\nNUM=0\r\n[DEBUG]\r\nLOG=0\r\n");

    QProcess second;
    server.start(second);
    ASSERT_TRUE(hasEnded(second));
    EXPECT_EQ(second.exitCode(), 0);
    EXPECT_EQ(second.readAllStandardError().trimmed().toStdString(), "The application is allready running.");

    expectOrderlyEnd(server, first, *aiSpy, [&] { terminate(first); });
}
#endif

TEST(RealServer, WithLoggingOnALoneNulFromAPlayerWritesOneErrorLineAndEndsTheProcess) {
    RealServer server("[SETUPLIST]\r\nNUM=0\r\n[DEBUG]\r\nLOG=1\r\n");
    QProcess process;
    server.start(process);
    auto aiSpy = RealServer::connectAiSpy();
    ASSERT_TRUE(aiSpy);
    Peer player(5555);
    player.sendRaw(QByteArray(1, '\0'));
    ASSERT_TRUE(hasEnded(process));
    std::string errors = server.read("TessarkSrvErrorLog.txt");
    EXPECT_EQ(std::count(errors.begin(), errors.end(), '\n'), 1);
    EXPECT_NE(errors.find("Error at TskSrvForm1::ParseData - Error: 5 - "), std::string::npos) << errors;
    EXPECT_TRUE(player.waitForDisconnect()); // no "DISCON": the program just ended
    EXPECT_TRUE(player.inbox().empty());
#ifndef Q_OS_WIN
    // Whoever watches the server (a service's journal) is told why it ended, not only the file.
    EXPECT_NE(process.readAllStandardError().toStdString().find(
                  "run-time error at TskSrvForm1::ParseData - Error: 5 - Invalid procedure call or argument"),
              std::string::npos);
#endif
}

#ifndef Q_OS_WIN
TEST(RealServer, WithItsWindowUpASignalEndsItAsExitDoes) {
    RealServer server;
    QProcess process;
    server.start(process, true);
    auto aiSpy = RealServer::connectAiSpy();
    ASSERT_TRUE(aiSpy);
    Peer player(5555);
    terminate(process);
    EXPECT_EQ(aiSpy->take(1).at(0).text(), "CLOSE1");
    EXPECT_EQ(player.take(1).at(0).text(), "DISCON");
    ASSERT_TRUE(hasEnded(process)); // the window's close box must not veto the end
    EXPECT_EQ(process.exitCode(), 0);
}

#if defined(Q_OS_LINUX)
namespace {
// CPU seconds the process has used so far, from /proc (Linux).
double cpuSeconds(qint64 pid) {
    QFile stat(QString("/proc/%1/stat").arg(pid));
    if (!stat.open(QIODevice::ReadOnly)) return -1;
    const QList<QByteArray> fields = stat.readAll().split(')').last().trimmed().split(' ');
    return (fields.at(11).toDouble() + fields.at(12).toDouble()) / static_cast<double>(sysconf(_SC_CLK_TCK));
}

qsizetype openDescriptors(qint64 pid) {
    return QDir(QString("/proc/%1/fd").arg(pid)).entryList(QDir::NoDotAndDotDot | QDir::System).size();
}
} // namespace

TEST(RealServer, SignalsThatKeepComingDuringShutdownStillEndItWithStatusZero) {
    RealServer server;
    QProcess process;
    server.start(process);
    auto aiSpy = RealServer::connectAiSpy();
    ASSERT_TRUE(aiSpy);
    Peer player(5555);
    // A few milliseconds apart until the process is gone, whatever stage of its end it is in.
    QElapsedTimer clock;
    clock.start();
    while (process.state() != QProcess::NotRunning && clock.elapsed() < 10000) {
        terminate(process);
        process.waitForFinished(3);
    }
    ASSERT_TRUE(hasEnded(process));
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(process.exitCode(), 0);
}

// A shutdown that waits on a peer that does not read, with SIGTERM every few milliseconds all
// the while, and standard error a pipe nobody reads any more: the server still ends as "Exit"
// does. (A signal handler that blocked on a full pipe, or a write that raised SIGPIPE, ended it
// otherwise or never.)
TEST(RealServer, SignalsDuringAStalledShutdownAndALostStandardErrorNeitherHangNorKillIt) {
    RealServer server;
    QProcess process;
    int pipe[2];
    ASSERT_EQ(::pipe(pipe), 0);
    process.setChildProcessModifier([&pipe] { ::dup2(pipe[1], STDERR_FILENO); });
    server.start(process);
    ::close(pipe[0]); // nobody reads the server's standard error any more
    ::close(pipe[1]);
    auto aiSpy = RealServer::connectAiSpy();
    ASSERT_TRUE(aiSpy);
    ::kill(static_cast<pid_t>(process.processId()), SIGUSR1); // ignored
    Peer reader(5555);
    reader.send("VALIDR", "Reader");
    EXPECT_EQ(reader.take(1).at(0).text(), "PLSNEW1@Reader@@-");
    // A player that asks for its list over and over and never reads the answers.
    QTcpSocket stalled;
    stalled.connectToHost(QHostAddress::LocalHost, 5555);
    ASSERT_TRUE(stalled.waitForConnected(3000));
    stalled.setReadBufferSize(1);
    QByteArray asks;
    for (int i = 0; i < 100000; ++i)
        asks += QByteArray("GETLST", 7);
    stalled.write(asks);
    pumpFor(500ms);

    QElapsedTimer clock;
    clock.start();
    while (process.state() != QProcess::NotRunning && clock.elapsed() < 15000) {
        terminate(process);
        process.waitForFinished(5);
    }
    ASSERT_TRUE(hasEnded(process));
    EXPECT_LT(clock.elapsed(), 10000);
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(process.exitCode(), 0);
    EXPECT_EQ(reader.take(1).back().text(), "DISCON");
}

TEST(RealServer, OutOfDescriptorsItRestsInsteadOfSpinningAndServesAgainWhenSomeAreFree) {
    RealServer server;
    QProcess process;
    process.setChildProcessModifier([] {
        rlimit limit{64, 64};
        setrlimit(RLIMIT_NOFILE, &limit);
    });
    server.start(process);
    auto aiSpy = RealServer::connectAiSpy();
    ASSERT_TRUE(aiSpy);
    // The crowd arrives while the server is held, so it finds a full queue of connections at once.
    ::kill(static_cast<pid_t>(process.processId()), SIGSTOP);
    std::vector<std::unique_ptr<QTcpSocket>> crowd;
    for (int i = 0; i < 80; ++i) {
        crowd.push_back(std::make_unique<QTcpSocket>());
        crowd.back()->connectToHost(QHostAddress::LocalHost, 5555);
    }
    pumpFor(300ms);
    ::kill(static_cast<pid_t>(process.processId()), SIGCONT);
    pumpFor(500ms);
    const double before = cpuSeconds(process.processId());
    pumpFor(1000ms);
    EXPECT_LT(cpuSeconds(process.processId()) - before, 0.5); // a spinning accept burns the whole second
    // It stopped short of the limit, keeping descriptors for its own files (and for a sanitizer's).
    EXPECT_LE(openDescriptors(process.processId()), 64 - 8);

    // The crowd goes; the connections still waiting to be taken are taken and found gone; then
    // a newcomer is served (slowly under a sanitizer).
    crowd.clear();
    pumpFor(1000ms);
    Peer player(5555);
    player.send("GETLST");
    EXPECT_EQ(player.take(3, 30s).size(), 3u);
    terminate(process);
    EXPECT_TRUE(hasEnded(process));
}
#endif
#endif

#ifdef Q_OS_WIN
namespace {
// The process's visible window with that title, once it is there (null if it never comes).
HWND waitForWindow(const QProcess& process, const QString& title) {
    pumpUntil([&] { return windows_session::visibleWindow(process.processId(), title) != nullptr; }, 10000ms);
    return windows_session::visibleWindow(process.processId(), title);
}
} // namespace

TEST(RealServer, RefusesASecondCopyInAMessageBoxAndShutsDownWhenTheWindowsSessionEnds) {
    RealServer server;
    QProcess first;
    server.start(first);
    auto aiSpy = RealServer::connectAiSpy();
    ASSERT_TRUE(aiSpy);
    const std::string ini = "[SETUPLIST]\r\nNUM=0\r\n[DEBUG]\r\nLOG=0\r\n";
    EXPECT_EQ(server.read("tessark.ini"), ini);
    EXPECT_TRUE(waitForWindow(first, "QUILLON v1.1.0b"));

    QProcess second;
    server.start(second);
    HWND box = waitForWindow(second, "Tessark Server");
    ASSERT_TRUE(box);
    EXPECT_FALSE(hasEnded(second)); // it waits for its OK
    PostMessageW(box, WM_CLOSE, 0, 0);
    ASSERT_TRUE(hasEnded(second));
    EXPECT_EQ(second.exitCode(), 0);
    EXPECT_EQ(server.read("tessark.ini"), ini);

    expectOrderlyEnd(server, first, *aiSpy,
                     [&] { EXPECT_TRUE(windows_session::endSession(first.processId())); });
}

TEST(RealServer, ItsCloseBoxOnlyPutsTheWindowAwayAndCtrlCEndsItAsExitDoes) {
    windows_session::haveConsole();
    RealServer server;
    QProcess process;
    server.start(process);
    auto aiSpy = RealServer::connectAiSpy();
    ASSERT_TRUE(aiSpy);
    HWND window = waitForWindow(process, "QUILLON v1.1.0b");
    ASSERT_TRUE(window);
    PostMessageW(window, WM_CLOSE, 0, 0);
    EXPECT_TRUE(pumpUntil([&] { return !IsWindowVisible(window) || IsIconic(window); }, 5000ms));
    EXPECT_TRUE(aiSpy->settle().empty()); // no "CLOSE1"
    Peer player(5555);
    player.send("VALIDR", "Viper");
    EXPECT_EQ(player.take(1).at(0).text(), "PLSNEW1@Viper@@-");

    ASSERT_TRUE(windows_session::pressCtrlC());
    EXPECT_EQ(aiSpy->take(1).at(0).text(), "CLOSE1");
    EXPECT_EQ(player.take(1).at(0).text(), "DISCON");
    ASSERT_TRUE(hasEnded(process));
    EXPECT_EQ(process.exitCode(), 0);
}
#endif
