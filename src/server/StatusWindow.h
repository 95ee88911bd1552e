#pragma once
#include "server/StatusDisplay.h"

#include <QMainWindow>

class Server;

// The status window "TskSrvForm1": players, counters, AI Spy state, menus and tray icon.
class StatusWindow : public QMainWindow, public StatusDisplay {
    Q_OBJECT
public:
    explicit StatusWindow(QWidget* parent = nullptr);
    void attach(Server& server);

    void showPlayers(const std::vector<PlayerRow>& rows) override;
    void showAwacsCount(const QString& text) override;
    void showSimCount(const QString& text) override;
    void showAiSpyState(bool connected) override;
    void messageBox(const QString& text, const QString& title, MessageIcon icon) override;
    void addTrayIcon(const QString& tip) override;
    void removeTrayIcon() override;
    void unloadOtherForms() override;

private:
    Server* server_ = nullptr;
};
