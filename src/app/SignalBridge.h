#pragma once
#include <QObject>

class QSocketNotifier;

// Brings SIGTERM and SIGINT into the event loop (through a socket pair), so a signal shuts the
// server down exactly as "Exit" does, between two events and never inside one.
// On Windows the same requests are the end of the Windows session (log off, shut down) and
// Ctrl+C, Ctrl+Break or closing the console the server was started from.
class SignalBridge : public QObject {
    Q_OBJECT
  public:
    explicit SignalBridge(QObject* parent = nullptr);
    ~SignalBridge() override;

  signals:
    void terminationRequested();

  private:
    QSocketNotifier* notifier_ = nullptr;
    void* sessionWindow_ = nullptr; // Windows: the hidden window that hears the session end
};
