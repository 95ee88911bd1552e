#pragma once
#include <QObject>

class QSocketNotifier;

// Brings SIGTERM and SIGINT into the event loop (through a socket pair), so a signal shuts the
// server down exactly as "Exit" does, between two events and never inside one.
class SignalBridge : public QObject {
    Q_OBJECT
public:
    explicit SignalBridge(QObject* parent = nullptr);
    ~SignalBridge() override;

signals:
    void terminationRequested();

private:
    QSocketNotifier* notifier_ = nullptr;
};
