#pragma once
// "List of Setups": removes setups from the catalogue (their files stay where they are).
#include <QDialog>

class Server;
class OperatorDialogs;
class PickList;

class SetupListFrm : public QDialog {
    Q_OBJECT
  public:
    SetupListFrm(Server& server, OperatorDialogs& dialogs, QWidget* parent = nullptr);

  private:
    void Command2_Click(); // Delete Setup
    void fillList();

    Server& server_;
    OperatorDialogs& dialogs_;
    PickList* List1;
};
