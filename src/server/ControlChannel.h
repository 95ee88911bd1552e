#pragma once
// The operator's command line reaching a running server: a local socket that only the same user
// can open (nothing new on the network), in the program directory (".tessark-server.control";
// on Windows a named pipe named after it), so each directory's server has its own. One request per
// connection: the command-line words after the options, as a JSON array of strings and a newline; one answer:
// {"status": n, "out": text, "err": text} and a newline.
//
//   status              what the status window shows, and each connection
//   exit                what "Exit" does (the answer goes out first)
//   setups ...          the setup commands, on the running server's own catalogue
#include <QLocalServer>
#include <QString>
#include <QStringList>

class Server;

// The local socket's name for a program directory (the same text the server was given).
QString controlChannelName(const QString& programDir);

struct ControlAnswer {
    int status = 0;
    QString out;
    QString err;
};

class ControlChannel : public QObject {
    Q_OBJECT
  public:
    // Requests and answers are small; anything longer is not a request.
    static constexpr qint64 kMaxRequestBytes = 64 * 1024;

    explicit ControlChannel(Server& server);
    // False when the name cannot be had (another server of the same directory holds it).
    bool listen();
    void close() { local_.close(); }

    // The answer to one request, as a server gives it.
    ControlAnswer answer(const QStringList& words);

  private:
    void serve(class QLocalSocket* socket);

    Server& server_;
    QLocalServer local_;
};
