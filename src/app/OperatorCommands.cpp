#include "app/OperatorCommands.h"

#include "app/CommandHelp.h"
#include "basics/ErrorLog.h"
#include "server/ConsoleDisplay.h"
#include "server/ControlChannel.h"
#include "setups/SetupCatalogue.h"
#include "setups/commands/SetupCommands.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocalSocket>
#include <QTextStream>

#include <cstdio>
#include <optional>

namespace {

constexpr int kAnswerWaitMs = 30000; // a setup's checksums take their time

// The running server's answer, or none when no server listens in the directory.
std::optional<ControlAnswer> askRunningServer(const QString& programDir, const QStringList& words) {
    QLocalSocket socket;
    socket.connectToServer(controlChannelName(programDir));
    if (!socket.waitForConnected(2000)) return std::nullopt;
    socket.write(QJsonDocument(QJsonArray::fromStringList(words)).toJson(QJsonDocument::Compact) + "\n");
    socket.flush();
    QByteArray reply;
    while (!reply.contains('\n') && socket.waitForReadyRead(kAnswerWaitMs))
        reply += socket.readAll();
    reply += socket.readAll();
    const QJsonObject json = QJsonDocument::fromJson(reply).object();
    if (json.isEmpty()) return ControlAnswer{1, {}, "The server gave no answer.\n"};
    return ControlAnswer{json["status"].toInt(1), json["out"].toString(), json["err"].toString()};
}

// No server: the setups of the directory itself, read and written as a server would.
ControlAnswer setupsOnDirectory(const QString& programDir, const QStringList& words) {
    ConsoleDisplay display;
    ErrorLog errorLog(programDir + "TessarkSrvErrorLog.txt", false, [] {});
    SetupCatalogue catalogue(programDir + "tessark.ini", errorLog, display);
    catalogue.reload();
    ControlAnswer answer;
    QTextStream out(&answer.out), err(&answer.err);
    answer.status = runSetupCommand(words.mid(1), catalogue, programDir, out, err);
    return answer;
}

} // namespace

int runOperatorCommand(const QString& programDir, const QStringList& words) {
    if (const std::optional<QString> help = commandHelp(words)) {
        std::fputs(help->toLocal8Bit().constData(), stdout);
        return 0;
    }
    std::optional<ControlAnswer> answer = askRunningServer(programDir, words);
    if (!answer && words.value(0) == "setups") answer = setupsOnDirectory(programDir, words);
    if (!answer)
        answer = ControlAnswer{kNoServerRunning, {}, "No Tessark Server is running in " + programDir + "\n"};
    std::fputs(answer->out.toLocal8Bit().constData(), stdout);
    std::fputs(answer->err.toLocal8Bit().constData(), stderr);
    return answer->status;
}
