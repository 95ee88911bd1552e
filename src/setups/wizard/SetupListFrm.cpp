#include "setups/wizard/SetupListFrm.h"

#include "net/Text.h"

#include "server/Server.h"
#include "setups/SetupCatalogue.h"
#include "setups/wizard/OperatorDialogs.h"
#include "setups/wizard/PickList.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

SetupListFrm::SetupListFrm(Server& server, OperatorDialogs& dialogs, QWidget* parent)
    : QDialog(parent), server_(server), dialogs_(dialogs) {
    setObjectName("SetupListFrm");
    setWindowTitle("List of Setups");
    setAttribute(Qt::WA_DeleteOnClose);
    auto* layout = new QVBoxLayout(this);
    List1 = new PickList(this);
    List1->setObjectName("List1");
    List1->setSelectionMode(QAbstractItemView::SingleSelection);
    List1->setFocus();
    layout->addWidget(List1);
    auto* row = new QHBoxLayout;
    auto* remove = new QPushButton("Delete Setup", this);
    remove->setObjectName("Command2");
    auto* exit = new QPushButton("Exit", this);
    exit->setObjectName("Command1");
    // Enter closes the list: "Delete Setup" acts only when pressed itself.
    exit->setDefault(true);
    row->addWidget(remove);
    row->addStretch();
    row->addWidget(exit);
    layout->addLayout(row);
    connect(remove, &QPushButton::clicked, this, &SetupListFrm::Command2_Click);
    connect(exit, &QPushButton::clicked, this, &QDialog::close);
    fillList();
    resize(360, 300);
}

void SetupListFrm::fillList() {
    List1->clear();
    const auto& setups = server_.setups().Setups();
    for (int i = 1; i <= setups.ubound(); ++i)
        List1->addItem(text::display(setups[i].Name));
}

void SetupListFrm::Command2_Click() {
    auto& setups = server_.setups().editableSetups();
    const int n = setups.ubound();
    if (n == 0) return;
    const QModelIndexList selected = List1->selectionModel()->selectedRows();
    const int s = selected.isEmpty() ? 0 : selected.front().row() + 1;
    // With nothing selected every setup is copied into a list one shorter, which fails before
    // anything has changed: the end of the program, catalogue and settings untouched.
    VbList<SetupRecord> kept;
    try {
        kept = VbList<SetupRecord>::withUpperBound(n - 1);
        for (int i = 1, j = 1; i <= n; ++i)
            if (i != s) kept[j++] = setups[i];
    } catch (const RuntimeError& e) {
        endAfterUnhandledError(server_, dialogs_, this, e);
        close();
        return;
    }
    setups = std::move(kept);
    fillList();
    server_.setups().commit();
    if (List1->count() > 0) List1->setCurrentRow(0);
}
