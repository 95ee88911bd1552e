#pragma once
#include <QObject>
#include <QString>

class QSocketNotifier;

// Brings the signals that ask the server something into the event loop, so each is served
// between two events and never inside one:
//   SIGTERM, SIGINT, SIGQUIT   shut down as "Exit" does
//   SIGHUP                     reload: the log file reopened, the settings and setups read again
//   SIGUSR1, SIGUSR2, SIGPIPE  ignored (a write to a peer or a reader that went away is an
//                              error of that write, not the end of the server)
// On Windows the requests to stop are the end of the Windows session (log off, shut down) and
// Ctrl+C, Ctrl+Break or closing the console the server was started from.
// SIGPIPE, SIGUSR1 and SIGUSR2 ignored at once, before anything is written (nothing on Windows).
void ignoreSignalsThatMustNotEndTheServer();

class SignalBridge : public QObject {
    Q_OBJECT
  public:
    explicit SignalBridge(QObject* parent = nullptr);
    ~SignalBridge() override;

  signals:
    // `why` names the request for the operator's log: "SIGTERM", "the session end"...
    void terminationRequested(const QString& why);
    void reloadRequested();

  private:
    QSocketNotifier* notifier_ = nullptr;
    void* sessionWindow_ = nullptr; // Windows: the hidden window that hears the session end
};
