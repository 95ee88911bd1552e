#pragma once
// The real executable, copied into an empty program directory of its own and started as an
// operator would start it. It listens on the production ports.
#include "support/Files.h"
#include "support/Peer.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

#include <csignal>
#include <memory>
#if !defined(_WIN32)
#include <unistd.h>
#endif

// The tests pump the event loop while they wait for messages, so the process may already be
// known to have ended, which waitForFinished() alone reports as a failure.
inline bool hasEnded(QProcess& process) {
    return process.state() == QProcess::NotRunning || process.waitForFinished(3000);
}

#ifndef Q_OS_WIN
// SIGTERM to the server, only while it runs: a process that is gone has id 0, and a signal to 0
// would go to the whole process group, the test runner included.
inline void terminate(QProcess& process) {
    const auto pid = static_cast<pid_t>(process.processId());
    if (pid > 0 && process.state() != QProcess::NotRunning) ::kill(pid, SIGTERM);
}
#endif

// What a copy started for one command answered.
struct Answer {
    int status = -1; // -1: it did not end by itself, or crashed
    std::string out, err;
};

// Line ends as written on Linux (a Windows program's standard streams write "\r\n").
inline std::string lines(QByteArray bytes) {
    return bytes.replace("\r\n", "\n").toStdString();
}

class RealServer {
  public:
    explicit RealServer(const QString& iniText = {}) {
        QFile::copy(TESSARK_SERVER_EXE, exe());
#ifdef Q_OS_WIN
        // Windows looks for DLLs beside the program: the folder gets the whole deployment.
        const QDir build = QFileInfo(TESSARK_SERVER_EXE).dir();
        for (const QString& name : build.entryList({"*.dll"}, QDir::Files))
            QFile::copy(build.filePath(name), file(name));
        for (const char* plugin :
             {"platforms/qwindows.dll", "platforms/qoffscreen.dll", "styles/qwindowsvistastyle.dll"}) {
            QDir(dir.path()).mkpath(QFileInfo(QString(plugin)).path());
            QFile::copy(build.filePath(plugin), file(plugin));
        }
#endif
        if (!iniText.isEmpty()) writeFile(file("tessark.ini"), iniText.toLatin1());
    }
    QString exe() const {
        return dir.path() + "/" + QFileInfo(TESSARK_SERVER_EXE).fileName();
    }
    QString file(const QString& name) const {
        return dir.path() + "/" + name;
    }
    std::string read(const QString& name) const {
        return readFile(file(name)).toStdString();
    }

    // Starts a copy headless (or with the status window on an offscreen display); the
    // single-instance lock lives in a temp dir of this test's own.
    // `cwd`: where it is started from; by default its own directory.
    void start(QProcess& process, bool withWindow = false, const QStringList& arguments = {},
               const QString& cwd = {}) const {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
            env.remove(name);
        if (withWindow) env.insert("QT_QPA_PLATFORM", "offscreen");
        env.insert("TMPDIR", lockDir.path());
        env.insert("XDG_RUNTIME_DIR", lockDir.path());
        env.insert("TMP", lockDir.path()); // Windows
        env.insert("TEMP", lockDir.path());
        env.insert(environment);
        process.setProcessEnvironment(env);
        process.setWorkingDirectory(cwd.isEmpty() ? dir.path() : cwd);
        process.start(exe(), arguments);
        process.waitForStarted();
    }
    // Waits until the production ports accept (the AI Spy's is opened last) and keeps that first
    // connection as the AI Spy: a probe that left would hold the link until the server saw it go.
    static std::unique_ptr<Peer> connectAiSpy() {
        QElapsedTimer clock;
        clock.start();
        while (clock.elapsed() < 5000) {
            auto aiSpy = std::make_unique<Peer>(5554);
            if (aiSpy->isConnected()) return aiSpy;
            pumpFor(10ms);
        }
        return nullptr;
    }

    // Starts a copy with these arguments (a command, say) and waits for it to end by itself.
    Answer answer(const QStringList& arguments, bool withWindow = false) const {
        QProcess process;
        start(process, withWindow, arguments);
        Answer result;
        if (!process.waitForFinished(10000)) {
            process.kill();
            process.waitForFinished();
            return result;
        }
        if (process.exitStatus() == QProcess::NormalExit) result.status = process.exitCode();
        result.out = lines(process.readAllStandardOutput());
        result.err = lines(process.readAllStandardError());
        return result;
    }

    QTemporaryDir dir, lockDir;
    QProcessEnvironment environment; // what every start gets on top of the test's own
};
