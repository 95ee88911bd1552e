#include "server/ControlChannel.h"

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
#include <QTextStream>

QString controlChannelName(const QString& programDir) {
    const QString dir = QDir::cleanPath(QDir(programDir).absolutePath());
#ifndef Q_OS_WIN
    // A socket file in the program directory: whoever may reach the directory (its user, root)
    // finds the server there, even one that runs with a private temporary directory, as a
    // service does. Socket paths are short; a long directory falls back to a named socket.
    const QString path = dir + "/.tessark-server.control";
    if (path.toLocal8Bit().size() < 100) return path;
#endif
    const QString user = qEnvironmentVariable("USER", qEnvironmentVariable("USERNAME", "user"));
    return "tessark-server-" + user + "-" +
           QCryptographicHash::hash(dir.toUtf8(), QCryptographicHash::Sha1).toHex().left(16);
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
    if (local_.listen(name)) return true;
    // A name left behind by a server that was killed: nobody answers on it, so it is taken over.
    QLocalSocket probe;
    probe.connectToServer(name);
    if (probe.waitForConnected(500)) return false;
    QLocalServer::removeServer(name);
    return local_.listen(name);
}

void ControlChannel::serve(QLocalSocket* socket) {
    connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
    connect(socket, &QLocalSocket::readyRead, socket, [this, socket] {
        if (socket->bytesAvailable() > kMaxRequestBytes) {
            socket->abort();
            return;
        }
        if (!socket->canReadLine()) return;
        const QJsonDocument request = QJsonDocument::fromJson(socket->readLine());
        QStringList words;
        for (const QJsonValue& word : request.array())
            words << word.toString();
        const ControlAnswer reply = answer(words);
        QJsonObject json{{"status", reply.status}, {"out", reply.out}, {"err", reply.err}};
        socket->write(QJsonDocument(json).toJson(QJsonDocument::Compact) + "\n");
        socket->flush();
        socket->disconnectFromServer();
        // "Exit" runs once the answer is on its way, as a command of its own.
        if (words.value(0) == "exit")
            QMetaObject::invokeMethod(
                &server_, [this] { server_.exit("the exit command"); }, Qt::QueuedConnection);
    });
}

ControlAnswer ControlChannel::answer(const QStringList& words) {
    if (std::optional<ControlAnswer> access = answerAccessCommand(server_, words)) return *access;
    ControlAnswer reply;
    const QString command = words.value(0);
    if (command == "status" && words.size() == 1) {
        reply.out = statusReport(server_);
    } else if (command == "reload" && words.size() == 1) {
        server_.reload("the reload command");
        reply.out = QString("Reloaded: %1 setups listed.\n").arg(server_.setups().list().ubound());
    } else if (command == "exit" && words.size() == 1) {
        reply.out = "Tessark Server is shutting down.\n";
    } else if (command == "setups") {
        QTextStream out(&reply.out), err(&reply.err);
        reply.status = runSetupCommand(words.mid(1), server_.setups(), server_.appDir(), out, err);
    } else {
        reply.status = 2;
        reply.err = "Unknown command: " + words.join(' ') + "\n";
    }
    return reply;
}
