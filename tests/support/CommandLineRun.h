#pragma once
// The executable run as an operator types a command for the server of a program directory,
// while the test's event loop runs, so a server in the test's own process answers it.
#include "support/Peer.h"

#include <QProcess>
#include <QStringList>

#include <string>

struct CommandLineRun {
    int status = -1; // -1: it did not end by itself, or crashed
    std::string out, err;
};

inline CommandLineRun runCommandLine(const QString& dir, const QStringList& words) {
    QProcess process; // the test's environment, WINEPREFIX included
    process.setProgram(TESSARK_SERVER_EXE);
    process.setArguments(QStringList{"--dir", dir} + words);
    process.start();
    pumpUntil([&] { return process.state() == QProcess::NotRunning; }, 30s);
    // Windows writes its console lines with CR LF.
    auto text = [](QByteArray bytes) { return bytes.replace("\r\n", "\n").toStdString(); };
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            text(process.readAllStandardOutput()), text(process.readAllStandardError())};
}
