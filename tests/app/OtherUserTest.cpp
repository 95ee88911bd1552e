// Other local users: the server of a squadron runs as a user of its own (a service), the operator
// types commands as another (root, from their own directory), and a third user on the same
// machine must not be able to pose as the server or keep it from starting. These run where the
// test runs as root and can act as "nobody"; elsewhere they are skipped.
#include "RealServer.h"
#include "support/FakeInstallation.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <gmock/gmock.h>

#if defined(Q_OS_LINUX)
#include <grp.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

using ::testing::HasSubstr;

namespace {

constexpr uid_t kNobody = 65534;

bool becomeNobody() {
    return setgroups(0, nullptr) == 0 && setgid(kNobody) == 0 && setuid(kNobody) == 0;
}

struct Outcome {
    int status = -1;
    std::string out, err;
};

// The command line, as root, from `cwd`, for the server of `dir`.
Outcome operatorCommand(const RealServer& server, const QString& cwd, const QStringList& words) {
    QProcess process;
    server.start(process, false, QStringList{"--dir", server.dir.path()} + words, cwd);
    pumpUntil([&] { return process.state() == QProcess::NotRunning; }, 30s);
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            process.readAllStandardOutput().toStdString(), process.readAllStandardError().toStdString()};
}

void chownTree(const QString& path, uid_t uid) {
    [[maybe_unused]] int ignored = ::chown(QFile::encodeName(path).constData(), uid, uid);
    for (const QFileInfo& entry :
         QDir(path).entryInfoList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden))
        chownTree(entry.filePath(), uid);
}

} // namespace

TEST(OtherUsers, SetupCommandsFromElsewhereReachTheServerOfAnotherUserAndLeaveFilesItCanRead) {
    if (geteuid() != 0) GTEST_SKIP() << "needs root to run the server as another user";
    FakeInstallation falcon;
    falcon.install("cobra.cfg", "set g_bFoo 1\r\n");
    falcon.install("Data/a.dat", "123456789");

    RealServer server;
    chownTree(server.dir.path(), kNobody);
    ::chmod(QFile::encodeName(server.dir.path()).constData(), 0755);
    ::chmod(QFile::encodeName(server.lockDir.path()).constData(), 0777);
    QProcess serving;
    serving.setChildProcessModifier([] {
        if (!becomeNobody()) _exit(77);
    });
    server.start(serving);
    auto aiSpy = RealServer::connectAiSpy();
    if (!aiSpy && hasEnded(serving) && serving.exitCode() == 77) GTEST_SKIP() << "cannot run as nobody here";
    ASSERT_TRUE(aiSpy) << serving.readAllStandardError().toStdString();

    // The operator works from a directory of their own, with paths that mean something there.
    QTemporaryDir home;
    writeFile(home.filePath("made/evening.stp"), "Evening\r\nCURSET@COB\r\n");
    Outcome run = operatorCommand(server, home.path(), {"setups", "import", "made/evening.stp"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_THAT(run.out, HasSubstr("Copied " + home.filePath("made/evening.stp").toStdString()));
    run = operatorCommand(server, home.path(),
                          {"setups", "create", "--name", "Night", "--installation", falcon.dir(), "--theater",
                           "Korea KTO", "--file", "Data/a.dat"});
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_THAT(run.out, HasSubstr("CHKSUM@Data\\a.dat@-873187034"));
    run =
        operatorCommand(server, home.path(),
                        {"setups", "verify", "2", "--installation", falcon.dir(), "--theater", "Korea KTO"});
    EXPECT_EQ(run.status, 0) << run.out << run.err;

    // Written by the server's user, readable by it and by everyone who reads setups.
    struct stat st {};
    ASSERT_EQ(::stat(QFile::encodeName(server.file("Night.stp")).constData(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0644u);
    EXPECT_EQ(st.st_uid, kNobody);
    ASSERT_EQ(::stat(QFile::encodeName(server.file("Evening.stp")).constData(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0644u);

    // And the players are offered both, with their lines.
    Peer player(5555);
    player.send("GETVLO", "2");
    EXPECT_EQ(player.takeTexts(4),
              (std::vector<std::string>{"VLRDIM3", "VLSADD1@CURSET@COB", "VLSADD2@CURTHE@Korea KTO",
                                        "VLSADD3@CHKSUM@Data\\a.dat@-873187034"}));

    // A setup root made by hand for the service, readable by root alone: the server says so
    // instead of offering it silently empty.
    writeFile(server.file("Secret.stp"), "Secret\r\nCURSET@COB\r\n");
    ::chmod(QFile::encodeName(server.file("Secret.stp")).constData(), 0600);
    const QByteArray ini = readFile(server.file("tessark.ini"));
    writeFile(server.file("tessark.ini"),
              QByteArray(ini).replace("NUM=2", "NUM=3") +
                  "[SETUPLIST3]\r\nFNAME=" + QFile::encodeName(server.file("Secret.stp")) + "\r\n");
    EXPECT_EQ(operatorCommand(server, home.path(), {"reload"}).status, 0);
    EXPECT_THAT(operatorCommand(server, home.path(), {"setups", "list"}).out,
                HasSubstr("Secret.stp  (cannot be read)"));
    EXPECT_THAT(operatorCommand(server, home.path(), {"status"}).out,
                HasSubstr("Secret.stp cannot be read (offered with an empty name)"));
    EXPECT_THAT(serving.readAllStandardError().toStdString(),
                HasSubstr("setups: setup 3: " + server.file("Secret.stp").toStdString() + " cannot be read"));
    terminate(serving);
    EXPECT_TRUE(hasEnded(serving));
}

TEST(OtherUsers, AnotherUsersSocketOrLockNeitherPosesAsTheServerNorKeepsItFromStarting) {
    if (geteuid() != 0) GTEST_SKIP() << "needs root to act as another user";
    RealServer server;
    // A program directory others may write to, with a socket of another user's where the
    // server's would be, and that user's directory where the lock would be: a shared temporary
    // directory, no session runtime directory, a home of its own.
    ::chmod(QFile::encodeName(server.dir.path()).constData(), 0777);
    ::chmod(QFile::encodeName(server.lockDir.path()).constData(), 0777);
    QTemporaryDir home;
    server.environment.insert("XDG_RUNTIME_DIR", "");
    server.environment.insert("HOME", home.path());
    const QByteArray planted = QFile::encodeName(server.file(".tessark-server.control"));
    const QString heard = server.file("heard.txt");
    const pid_t impostor = fork();
    if (impostor == 0) {
        if (!becomeNobody()) _exit(77);
        ::mkdir(QFile::encodeName(server.lockDir.path() + "/tessark-server-0").constData(), 0700);
        const int s = ::socket(AF_UNIX, SOCK_STREAM, 0);
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strncpy(address.sun_path, planted.constData(), sizeof address.sun_path - 1);
        if (::bind(s, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 || ::listen(s, 4) != 0)
            _exit(78);
        for (;;) { // answers every request with a forged status and keeps what it was sent
            const int c = ::accept(s, nullptr, nullptr);
            char buffer[4096];
            const ssize_t n = ::read(c, buffer, sizeof buffer);
            QFile out(heard);
            if (n > 0 && out.open(QIODevice::Append)) out.write(buffer, n);
            const char forged[] = "{\"status\":0,\"out\":\"Players: 0\\n\",\"err\":\"\"}\n";
            [[maybe_unused]] ssize_t w = ::write(c, forged, sizeof forged - 1);
            ::close(c);
        }
    }
    struct Reap {
        pid_t pid;
        ~Reap() {
            ::kill(pid, SIGKILL);
            ::waitpid(pid, nullptr, 0);
        }
    } reap{impostor};
    pumpUntil([&] { return QFileInfo::exists(QFile::decodeName(planted)); });
    if (!QFileInfo::exists(QFile::decodeName(planted))) GTEST_SKIP() << "cannot act as nobody here";

    // The server starts all the same, and the command line will not talk to the impostor.
    QProcess process;
    server.start(process);
    auto aiSpy = RealServer::connectAiSpy();
    ASSERT_TRUE(aiSpy) << process.readAllStandardError().toStdString();
    QProcess status;
    server.start(status, false, {"--dir", server.dir.path(), "status"});
    ASSERT_TRUE(hasEnded(status));
    EXPECT_EQ(status.exitCode(), 1);
    EXPECT_THAT(status.readAllStandardError().toStdString(), HasSubstr("held by user 65534"));
    EXPECT_FALSE(QFileInfo::exists(heard));

    ::kill(impostor, SIGKILL);
    QFile::remove(QFile::decodeName(planted));
    // With the impostor gone, the server's own channel answers (it never used the planted name).
    server.start(status, false, {"--dir", server.dir.path(), "status", "--json"});
    ASSERT_TRUE(hasEnded(status));
    EXPECT_EQ(status.exitCode(), 0) << status.readAllStandardError().toStdString();
    EXPECT_TRUE(QJsonDocument::fromJson(status.readAllStandardOutput())
                    .object()["aiSpy"]
                    .toObject()["connected"]
                    .toBool());
    terminate(process);
    EXPECT_TRUE(hasEnded(process));
}
#endif
