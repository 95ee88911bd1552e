#include "server/ControlChannel.h"

#include "basics/OperatorLog.h"
#include "basics/PrivateDir.h"
#include "server/AccessCommands.h"
#include "server/Server.h"
#include "server/StatusReport.h"
#include "setups/SetupCatalogue.h"
#include "setups/commands/SetupCommands.h"

#include <QCryptographicHash>
#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocalSocket>
#include <QPointer>
#include <QTimer>

namespace {

constexpr int kRequestWaitMs = 30000; // a request that has not come whole by then never will
// Socket paths are short (108 bytes on Linux, with the terminating NUL).
constexpr int kMaxSocketPath = 100;

QString cleanDir(const QString& programDir) {
    return QDir::cleanPath(QDir(programDir).absolutePath());
}

QString hashedName(const QString& programDir) {
    return QCryptographicHash::hash(cleanDir(programDir).toUtf8(), QCryptographicHash::Sha1)
               .toHex()
               .left(16) +
           ".control";
}

[[maybe_unused]] QString inProgramDir(const QString& programDir) {
    return cleanDir(programDir) + "/.tessark-server.control";
}

} // namespace

QStringList controlChannelNames(const QString& programDir) {
#ifdef Q_OS_WIN
    return {controlChannelName(programDir)};
#else
    QStringList names{inProgramDir(programDir)};
    const QString runtime = privateRuntimeDir();
    if (!runtime.isEmpty()) names << runtime + "/" + hashedName(programDir);
    // A server started without the runtime directory this shell has (from cron, say) made its
    // own in the temporary directory.
    const QString temporary = QDir::tempPath() + "/tessark-server-" + QString::number(effectiveUser());
    if (!runtime.startsWith(temporary)) names << temporary + "/" + hashedName(programDir);
    return names;
#endif
}

QString controlChannelName(const QString& programDir) {
#ifdef Q_OS_WIN
    // A named pipe: per user by its name and by the access the server gives it.
    const QString user = qEnvironmentVariable("USERNAME", "user");
    return "tessark-server-" + user + "-" + hashedName(programDir).section('.', 0, 0);
#else
    // In the program directory when nobody but this user can put a socket there first, so that
    // whoever reaches the directory (its user, root) finds the server there, even a service with
    // a private temporary directory.
    const QString inDir = inProgramDir(programDir);
    if (isOwnPrivateDir(cleanDir(programDir)) && inDir.toLocal8Bit().size() < kMaxSocketPath) return inDir;
    QString why;
    const QString runtime = privateRuntimeDir(&why);
    if (runtime.isEmpty()) {
        qCWarning(lcRun, "no private directory for the control channel: %s", qUtf8Printable(why));
        return {};
    }
    return runtime + "/" + hashedName(programDir);
#endif
}

ControlChannel::ControlChannel(Server& server) : server_(server) {
    local_.setSocketOptions(QLocalServer::UserAccessOption);
    connect(&local_, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket* socket = local_.nextPendingConnection())
            serve(socket);
    });
}

bool ControlChannel::listen() {
    const QString name = controlChannelName(server_.appDir());
    if (name.isEmpty()) return false;
    if (!local_.listen(name)) {
        // A name left behind by a server that was killed: nobody answers on it, so it is taken over.
        QLocalSocket probe;
        probe.connectToServer(name);
        if (probe.waitForConnected(500)) return false;
        QLocalServer::removeServer(name);
        if (!local_.listen(name)) return false;
    }
    qCInfo(lcRun, "operator commands on %s", qUtf8Printable(local_.fullServerName()));
    return true;
}

void ControlChannel::serve(QLocalSocket* socket) {
    connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
    // A client that connects and never finishes its request does not keep the socket.
    QTimer::singleShot(kRequestWaitMs, socket, [socket] { socket->abort(); });
    socket->setReadBufferSize(kMaxRequestBytes + 1);
    connect(socket, &QLocalSocket::readyRead, socket, [this, socket] {
        if (socket->bytesAvailable() > kMaxRequestBytes) {
            socket->abort();
            return;
        }
        if (!socket->canReadLine()) return;
        const QJsonObject request = QJsonDocument::fromJson(socket->readLine()).object();
        QStringList words;
        for (const QJsonValue& word : request["words"].toArray())
            words << word.toString();
        const QByteArray content = QByteArray::fromBase64(request["content"].toString().toLatin1());
        // A message box the command raises (a setup file missing on reload) runs a loop of its
        // own, in which the request's timer may end the socket.
        const QPointer<QLocalSocket> asker(socket);
        const ControlAnswer reply = answer(words, content);
        if (!asker) return;
        QJsonObject json{{"status", reply.status}, {"out", reply.out}, {"err", reply.err}};
        socket->write(QJsonDocument(json).toJson(QJsonDocument::Compact) + "\n");
        socket->flush();
        socket->disconnectFromServer();
        // "Exit" runs once the answer is on its way, as a command of its own.
        if (words.value(0) == "exit" && reply.status == 0)
            QMetaObject::invokeMethod(
                &server_, [this] { server_.exit("the exit command"); }, Qt::QueuedConnection);
    });
}

ControlAnswer ControlChannel::answer(const QStringList& words, const QByteArray& content) {
    if (std::optional<ControlAnswer> access = answerAccessCommand(server_, words)) return *access;
    ControlAnswer reply;
    const QString command = words.value(0);
    if (command == "status" && (words.size() == 1 || (words.size() == 2 && words[1] == "--json"))) {
        const StatusSnapshot snapshot = takeStatusSnapshot(server_);
        reply.out =
            words.size() == 1
                ? statusText(snapshot)
                : QString::fromUtf8(QJsonDocument(statusJson(snapshot)).toJson(QJsonDocument::Indented));
    } else if (command == "reload" && words.size() == 1) {
        const QStringList errors = server_.reload("the reload command");
        reply.out = QString("Reloaded: %1 setups listed.\n").arg(server_.setups().list().ubound());
        if (!errors.isEmpty()) {
            reply.status = 1;
            reply.err = "The settings did not read, the running ones stay:\n" + errors.join('\n') + "\n";
        }
    } else if (command == "exit" && words.size() == 1) {
        reply.out = "Tessark Server is shutting down.\n";
    } else if (command == "setups") {
        const CatalogueAnswer catalogue =
            serveCatalogueRequest(words.mid(1), content, server_.setups(), server_.appDir());
        reply = {catalogue.status, catalogue.out, catalogue.err};
    } else {
        reply.status = 2;
        reply.err = "Unknown command: " + words.join(' ') + "\n";
    }
    return reply;
}
