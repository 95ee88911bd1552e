#pragma once
// The notification-area icon: its tip is the window title, a double-click shows the window,
// and its popup offers "Show" (the default, bold) and "Exit".
#include <QObject>

class QAction;
class QMenu;
class QSystemTrayIcon;

class TrayIcon : public QObject {
    Q_OBJECT
  public:
    explicit TrayIcon(QObject* parent = nullptr);
    ~TrayIcon() override;

    // Whether the desktop has a notification area at all.
    static bool available();
    // The tip keeps at most 64 characters, as the notification area's own field holds.
    void add(const QString& tip);
    void remove();
    bool shown() const;

    QAction* showAction() const { return showAction_; }
    QAction* exitAction() const { return exitAction_; }

  signals:
    void showRequested();
    void exitRequested();

  private:
    QSystemTrayIcon* icon_ = nullptr;
    QMenu* menu_;
    QAction* showAction_;
    QAction* exitAction_;
};
