// The executable's command line: what it answers at once (help, version, mistakes), also
// beside a running server, and where --dir and the default put tessark.ini and the logs.
#include "RealServer.h"
#include "WindowsSession.h"

#include <gtest/gtest.h>

#if !defined(_WIN32)
#include <grp.h>
#include <sys/types.h>
#endif

namespace {

const QByteArray kIni = "[SETUPLIST]\r\nNUM=0\r\n[DEBUG]\r\nLOG=0\r\n";

std::string versionLine() {
    return "tessark-server " + std::to_string(TESSARK_VERSION_MAJOR) + "." +
           std::to_string(TESSARK_VERSION_MINOR) + "." + std::to_string(TESSARK_VERSION_PATCH) + "\n";
}

// Stops a server as its system would: SIGTERM, or on Windows the end of the session (told to
// its windows once the status window is up). True when it ended with status 0.
bool stop(QProcess& process) {
#ifdef Q_OS_WIN
    pumpUntil(
        [&] { return windows_session::visibleWindow(process.processId(), "QUILLON v1.1.0b") != nullptr; },
        10000ms);
    windows_session::endSession(process.processId());
#else
    terminate(process);
#endif
    return hasEnded(process) && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

} // namespace

TEST(CommandLine, AnswersHelpAndVersionAndRefusesWhatItDoesNotKnowWithoutStartingTheServer) {
    RealServer server;
    QTemporaryDir elsewhere;
    const QString missing = elsewhere.path() + "/missing";
    const QString aFile = elsewhere.path() + "/a-file";
    QFile(aFile).open(QIODevice::WriteOnly);

    for (bool withWindow : {false, true}) {
        const Answer version = server.answer({"--version"}, withWindow);
        EXPECT_EQ(version.status, 0) << withWindow;
        EXPECT_EQ(version.out, versionLine()) << withWindow;
        // A platform plugin may have warnings of its own; on Windows there always is one.
#ifndef Q_OS_WIN
        if (!withWindow) {
            EXPECT_EQ(version.err, "");
        }
#endif
    }

    const Answer help = server.answer({"--help"});
    EXPECT_EQ(help.status, 0);
    for (const char* part : {"Usage:", "--dir <DIR>", "--version", "--help"})
        EXPECT_NE(help.out.find(part), std::string::npos) << part << " in:\n" << help.out;
#ifdef Q_OS_WIN
    // How the program is stopped, as Windows does it: it has no signals and no DISPLAY.
    EXPECT_NE(help.out.find("File > Exit"), std::string::npos) << help.out;
    for (const char* foreign : {"DISPLAY", "SIGTERM", "headless"})
        EXPECT_EQ(help.out.find(foreign), std::string::npos) << foreign << " in:\n" << help.out;
#else
    EXPECT_NE(help.out.find("SIGTERM"), std::string::npos) << help.out;
#endif

    struct Mistake {
        QStringList arguments;
        int status;
        std::string says;
    };
    const Mistake mistakes[] = {
        {{"--frobnicate"}, 2, "Unknown option 'frobnicate'."},
        {{"frobnicate"}, 2, "Unknown command 'frobnicate'."},
        {{"--dir"}, 2, "Missing value after '--dir'."},
        {{"--dir", missing},
         1,
         QDir::toNativeSeparators(missing).toStdString() + " does not exist, or this user may not reach it."},
        {{"--dir", aFile}, 1, QDir::toNativeSeparators(aFile).toStdString() + " is not a directory."},
    };
    for (const Mistake& mistake : mistakes) {
        const Answer refused = server.answer(mistake.arguments);
        const std::string arguments = mistake.arguments.join(' ').toStdString();
        EXPECT_EQ(refused.status, mistake.status) << arguments;
        EXPECT_NE(refused.err.find(mistake.says), std::string::npos) << arguments << ": " << refused.err;
        EXPECT_EQ(refused.out, "") << arguments;
    }
    // None of them got as far as the program directory.
    EXPECT_FALSE(QFile::exists(server.file("tessark.ini")));
    EXPECT_FALSE(QFile::exists(missing));
}

TEST(CommandLine, DirHoldsTheProgramFilesAndOtherCopiesStillAnswerWhileTheServerRuns) {
    RealServer server;
    QTemporaryDir programDir;
    QProcess running;
    server.start(running, false, {"--dir", programDir.path()});
    auto aiSpy = RealServer::connectAiSpy();
    ASSERT_TRUE(aiSpy);
    EXPECT_EQ(readFile(programDir.path() + "/tessark.ini"), kIni);
    EXPECT_FALSE(QFile::exists(server.file("tessark.ini")));

    // The same user and lock as the running server: answered all the same, not "allready running".
    const Answer version = server.answer({"--version"});
    EXPECT_EQ(version.status, 0);
    EXPECT_EQ(version.out, versionLine());
    // The running server's own status, over its control channel.
    const Answer status = server.answer({"--dir", programDir.path(), "status"});
    EXPECT_EQ(status.status, 0) << status.err;
    EXPECT_NE(status.out.find("AI Spy: connected"), std::string::npos) << status.out;

    EXPECT_TRUE(stop(running));
    EXPECT_EQ(aiSpy->take(1).at(0).text(), "CLOSE1");
}

#ifndef Q_OS_WIN
// Linux only: Windows' installer puts the program where its user may write, and Qt does not
// look at a Windows folder's access rights anyway.
TEST(CommandLine, AnExecutableWhereItsUserMayNotWriteKeepsTheProgramFilesInTheUsersDataDirectory) {
    RealServer server;
    QTemporaryDir data;
    server.environment.insert("XDG_DATA_HOME", data.path());
    constexpr auto kAll = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner | QFile::ReadGroup |
                          QFile::WriteGroup | QFile::ExeGroup | QFile::ReadOther | QFile::WriteOther |
                          QFile::ExeOther;
    constexpr auto kReadOnly = QFile::ReadOwner | QFile::ExeOwner | QFile::ReadGroup | QFile::ExeGroup |
                               QFile::ReadOther | QFile::ExeOther;
    QFile::setPermissions(server.dir.path(), kReadOnly);
    QFile::setPermissions(server.lockDir.path(), kAll);
    QFile::setPermissions(data.path(), kAll);
    struct Restore { // so that the temporary directory can be removed again
        const RealServer& server;
        ~Restore() {
            QFile::setPermissions(server.dir.path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        }
    } restore{server};

    QProcess process;
    // Root may write anywhere: the server then runs as nobody.
    if (geteuid() == 0)
        process.setChildProcessModifier([] {
            if (setgroups(0, nullptr) != 0 || setgid(65534) != 0 || setuid(65534) != 0) _exit(77);
        });
    server.start(process);
    auto aiSpy = RealServer::connectAiSpy();
    if (!aiSpy && hasEnded(process) && process.exitCode() == 77) GTEST_SKIP() << "cannot run as nobody here";
    ASSERT_TRUE(aiSpy) << process.readAllStandardError().toStdString();
    EXPECT_EQ(readFile(data.path() + "/tessark-server/tessark.ini"), kIni);
    EXPECT_FALSE(QFile::exists(server.file("tessark.ini")));
    EXPECT_TRUE(stop(process));
}
#endif
