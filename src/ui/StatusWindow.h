#pragma once
#include "basics/StatusDisplay.h"
#include "ui/wizard/SetupListDialog.h"

#include <QMainWindow>
#include <QPointer>

#include <memory>

class SocketElement;

class Server;
class TrayIcon;
class SetupWizard;
class OperatorDialogs;
class QLabel;
class QLineEdit;
class QMenu;
class QTreeWidget;

// The status window: the players and their verification state, the AWACS and
// SIM client counters, the AI Spy link, the menus and the tray icon. It only shows what the
// server reports and hands the operator's commands to the server and the setup forms.
class StatusWindow : public QMainWindow, public StatusDisplay {
    Q_OBJECT
  public:
    explicit StatusWindow(QWidget* parent = nullptr);
    // With dialogs of the caller's (the screenshot program chooses files without a dialog).
    explicit StatusWindow(std::unique_ptr<OperatorDialogs> dialogs, QWidget* parent = nullptr);
    ~StatusWindow() override;
    void attach(Server& server);

    void showPlayers(const std::vector<PlayerRow>& rows) override;
    void showAwacsCount(const QString& text) override;
    void showSimCount(const QString& text) override;
    void showAiSpyState(bool connected) override;
    void messageBox(const QString& text, const QString& title, MessageIcon icon) override;
    void addTrayIcon(const QString& tip) override;
    void removeTrayIcon() override;
    void unloadOtherForms() override;

    // "Show" in the tray popup and the double-click on the icon.
    void showFromTray();
    TrayIcon& tray() { return *tray_; }
    SetupWizard* wizard() { return wizard_.get(); }
    SetupListDialog* setupList() { return setupList_; }
    // The menu of a player's row ("mnuPlayer": "Kick", "Ban Address"), opened on the row.
    QMenu* playerMenu() { return playerMenu_; }

  protected:
    // The close box only puts the window away; "Exit" ends the server.
    void closeEvent(QCloseEvent* event) override;

  private:
    void buildControls();
    void buildMenus();
    // The menu commands (the tray's "Exit" too).
    void onExit();
    void onAddSetup();
    void onEditSetupList();
    void openPlayerMenu(const QPoint& where);
    void onKick();
    void onBanAddress();

    Server* server_ = nullptr;
    std::unique_ptr<OperatorDialogs> dialogs_;
    std::unique_ptr<SetupWizard> wizard_;
    QPointer<SetupListDialog> setupList_;
    TrayIcon* tray_;

    QLabel* playersLabel_;
    QTreeWidget* playerTree_;
    QMenu* playerMenu_;
    // The row the player menu was opened on: its slot, and the connection in it then. A click
    // after that player left must not reach whoever took the slot since.
    int menuSlot_ = 0;
    QPointer<SocketElement> menuConnection_;
    SocketElement* chosenConnection() const;
    QLabel* awacsLabel_;
    QLineEdit* awacsCount_;
    QLabel* simLabel_;
    QLineEdit* simCount_;
    QLabel* aiSpyState_;
};
