#pragma once
// "List of Setups": removes setups from the catalogue (their files stay where they are).
#include <QDialog>

class Server;
class OperatorDialogs;
class PickList;

class SetupListDialog : public QDialog {
    Q_OBJECT
  public:
    SetupListDialog(Server& server, OperatorDialogs& dialogs, QWidget* parent = nullptr);

  private:
    // Removes the picked setup from the catalogue.
    void onDeleteSetup();
    void fillList();

    Server& server_;
    OperatorDialogs& dialogs_;
    PickList* setupList_;
};
