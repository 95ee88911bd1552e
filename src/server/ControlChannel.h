#pragma once
// The operator's command line reaching a running server: a local socket that only the server's
// user can open (nothing new on the network). It lies in the program directory when only that
// user may create entries there (".tessark-server.control"), else in the user's own private
// runtime directory under a name made from the program directory; on Windows it is a named pipe
// of the user's own. Each directory's server has its own.
//
// One request per connection, a JSON object and a newline: {"words": [...], "content": base64}
// (the command-line words after the options; the bytes of a file a setups command stores). One
// answer: {"status": n, "out": text, "err": text} and a newline.
//
//   status [--json]     what the status window shows, and each connection
//   exit                what "Exit" does (the answer goes out first)
//   reload              what SIGHUP does
//   setups ...          the catalogue's requests (see serveCatalogueRequest)
#include <QLocalServer>
#include <QString>
#include <QStringList>

class Server;

// Where the command line looks for the server of a program directory, most likely first.
QStringList controlChannelNames(const QString& programDir);
// Where the server of a program directory listens.
QString controlChannelName(const QString& programDir);

struct ControlAnswer {
    int status = 0;
    QString out;
    QString err;
};

class ControlChannel : public QObject {
    Q_OBJECT
  public:
    // A request holds at most a setup file (see FileLimits) and its words, base64 and all.
    static constexpr qint64 kMaxRequestBytes = 8 * 1024 * 1024;

    explicit ControlChannel(Server& server);
    // False when the name cannot be had (another server of the same directory holds it).
    bool listen();
    void close() { local_.close(); }
    QString name() const { return local_.fullServerName(); }

    // The answer to one request, as a server gives it.
    ControlAnswer answer(const QStringList& words, const QByteArray& content = {});

  private:
    void serve(class QLocalSocket* socket);

    Server& server_;
    QLocalServer local_;
};
