#include "app/OperatorCommands.h"

#include "app/CommandHelp.h"
#include "basics/ErrorLog.h"
#include "basics/OperatorLog.h"
#include "basics/PrivateDir.h"
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

#ifdef Q_OS_LINUX
#include <sys/socket.h>
#include <unistd.h>
#endif

namespace {

constexpr int kConnectWaitMs = 2000;
constexpr int kAnswerWaitMs = 60000; // the server answers from its loop; a catalogue write is quick

// Who holds the socket: a server of this user, or of the program directory's owner (root
// asking the service), is trusted with the operator's words and files; another local user's
// socket planted in the server's place is not.
std::optional<QString> untrustedPeer(QLocalSocket& socket, const QString& programDir) {
#ifdef Q_OS_LINUX
    ucred peer{};
    socklen_t size = sizeof peer;
    if (getsockopt(static_cast<int>(socket.socketDescriptor()), SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0)
        return QString("whose owner cannot be told");
    const long uid = static_cast<long>(peer.uid);
    if (uid == effectiveUser() || uid == ownerOf(programDir)) return std::nullopt;
    return QString("held by user %1, neither this user nor the owner of %2").arg(uid).arg(programDir);
#else
    Q_UNUSED(socket);
    Q_UNUSED(programDir);
    return std::nullopt; // Windows: the pipe's name and access are the user's own
#endif
}

// A connection to the server of the directory, or none when no server answers there.
std::unique_ptr<QLocalSocket> connectToServer(const QString& programDir, QString* refused) {
    for (const QString& name : controlChannelNames(programDir)) {
        auto socket = std::make_unique<QLocalSocket>();
        socket->connectToServer(name);
        if (!socket->waitForConnected(kConnectWaitMs)) continue;
        if (const std::optional<QString> why = untrustedPeer(*socket, programDir)) {
            *refused = "The control channel " + name + " is " + *why + ": nothing was sent to it.\n";
            return nullptr;
        }
        return socket;
    }
    return nullptr;
}

ControlAnswer request(QLocalSocket& socket, const QStringList& words, const QByteArray& content) {
    QJsonObject json{{"words", QJsonArray::fromStringList(words)}};
    if (!content.isNull()) json.insert("content", QString::fromLatin1(content.toBase64()));
    socket.write(QJsonDocument(json).toJson(QJsonDocument::Compact) + "\n");
    socket.flush();
    QByteArray reply;
    while (!reply.contains('\n') && socket.waitForReadyRead(kAnswerWaitMs))
        reply += socket.readAll();
    reply += socket.readAll();
    const QJsonObject answer = QJsonDocument::fromJson(reply).object();
    if (answer.isEmpty()) return ControlAnswer{1, {}, "The server gave no answer.\n"};
    return ControlAnswer{answer["status"].toInt(1), answer["out"].toString(), answer["err"].toString()};
}

// The running server's catalogue: one connection per request.
class RemoteCatalogue : public CatalogueAccess {
  public:
    explicit RemoteCatalogue(QString programDir) : programDir_(std::move(programDir)) {}
    CatalogueAnswer ask(const QStringList& words, const QByteArray& content) override {
        QString refused;
        std::unique_ptr<QLocalSocket> socket = connectToServer(programDir_, &refused);
        if (!socket) return {1, {}, refused.isEmpty() ? "The server went away.\n" : refused};
        const ControlAnswer answer = request(*socket, QStringList("setups") + words, content);
        return {answer.status, answer.out, answer.err};
    }
    QString programDir() const override { return programDir_; }

  private:
    QString programDir_;
};

// Progress of a long checksum, on a terminal only: what a script reads stays as it was.
ChecksumProgressReport terminalProgress() {
#ifdef Q_OS_UNIX
    if (!isatty(STDERR_FILENO)) return {};
#endif
    return [](const QString& file, qint64 done, qint64 size) {
        std::fprintf(stderr, "\rchecksum of %s: %lld of %lld MiB%s", file.toLocal8Bit().constData(),
                     static_cast<long long>(done >> 20), static_cast<long long>(size >> 20),
                     done >= size ? "\n" : "");
        std::fflush(stderr);
    };
}

ControlAnswer setupsCommand(const QString& programDir, const QStringList& words, bool serverRuns) {
    ControlAnswer answer;
    QTextStream out(&answer.out), err(&answer.err);
    if (serverRuns) {
        RemoteCatalogue remote(programDir);
        answer.status = runSetupCommand(words.mid(1), remote, out, err, terminalProgress());
        return answer;
    }
    // No server: the directory's own catalogue, read and written as a server would.
    ConsoleDisplay display;
    ErrorLog errorLog(programDir + "TessarkSrvErrorLog.txt", false, [] {});
    SetupCatalogue catalogue(programDir + "tessark.ini", errorLog, display);
    catalogue.reload();
    DirectCatalogue direct(catalogue, programDir);
    answer.status = runSetupCommand(words.mid(1), direct, out, err, terminalProgress());
    return answer;
}

} // namespace

int runOperatorCommand(const QString& programDir, const QStringList& words) {
    if (const std::optional<QString> help = commandHelp(words)) {
        std::fputs(help->toLocal8Bit().constData(), stdout);
        return 0;
    }
    // The command line tells its own results; what the catalogue code tells the server's log
    // is not for its terminal.
    operator_log::install({LogLevel::Warning, {}, 0, 0});

    QString refused;
    std::unique_ptr<QLocalSocket> socket = connectToServer(programDir, &refused);
    std::optional<ControlAnswer> answer;
    if (!refused.isEmpty())
        answer = ControlAnswer{1, {}, refused};
    else if (words.value(0) == "setups")
        answer = setupsCommand(programDir, words, socket != nullptr);
    else if (socket)
        answer = request(*socket, words, {});
    else
        answer = ControlAnswer{kNoServerRunning, {}, "No Tessark Server is running in " + programDir + "\n"};
    std::fputs(answer->out.toLocal8Bit().constData(), stdout);
    std::fputs(answer->err.toLocal8Bit().constData(), stderr);
    return answer->status;
}
