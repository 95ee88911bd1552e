#pragma once
#include "server/StatusDisplay.h"
#include "setups/wizard/SetupListFrm.h"

#include <QMainWindow>
#include <QPointer>

#include <memory>

class Server;
class TrayIcon;
class SetupWizard;
class OperatorDialogs;
class QAction;
class QLabel;
class QLineEdit;
class QMenu;
class QTreeWidget;

// The status window "TskSrvForm1": the players and their verification state, the AWACS and
// SIM client counters, the AI Spy link, the menus and the tray icon. It only shows what the
// server reports and hands the operator's commands to the server and the setup forms.
class StatusWindow : public QMainWindow, public StatusDisplay {
    Q_OBJECT
  public:
    explicit StatusWindow(QWidget* parent = nullptr);
    ~StatusWindow() override;
    void attach(Server& server);
    // The file dialogs and boxes the setup forms use (tests choose files through their own).
    void setOperatorDialogs(OperatorDialogs& dialogs);

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
    SetupListFrm* setupList() { return setupList_; }

  protected:
    // The close box only puts the window away; "Exit" ends the server.
    void closeEvent(QCloseEvent* event) override;

  private:
    void buildControls();
    void buildMenus();
    void mnuExit_Click();
    void mnuAddSetup_Click();
    void mnuEditSetupList_Click();

    Server* server_ = nullptr;
    std::unique_ptr<OperatorDialogs> ownDialogs_;
    OperatorDialogs* dialogs_;
    std::unique_ptr<SetupWizard> wizard_;
    QPointer<SetupListFrm> setupList_;
    TrayIcon* tray_;

    QLabel* Label1;
    QTreeWidget* TreeView1;
    QLabel* Label2;
    QLineEdit* Text1;
    QLabel* Label3;
    QLineEdit* Text2;
    QLabel* Label4;
};
