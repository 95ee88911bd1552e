#include "ui/wizard/SetupListDialog.h"

#include "basics/Text.h"

#include "server/Server.h"
#include "setups/SetupCatalogue.h"
#include "setups/authoring/SetupRemoval.h"
#include "ui/wizard/OperatorDialogs.h"
#include "ui/wizard/PickList.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

SetupListDialog::SetupListDialog(Server& server, OperatorDialogs& dialogs, QWidget* parent)
    : QDialog(parent), server_(server), dialogs_(dialogs) {
    setObjectName("SetupListFrm");
    setWindowTitle("List of Setups");
    setAttribute(Qt::WA_DeleteOnClose);
    auto* layout = new QVBoxLayout(this);
    setupList_ = new PickList(this);
    setupList_->setObjectName("List1");
    setupList_->setSelectionMode(QAbstractItemView::SingleSelection);
    setupList_->setFocus();
    layout->addWidget(setupList_);
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
    connect(remove, &QPushButton::clicked, this, &SetupListDialog::onDeleteSetup);
    connect(exit, &QPushButton::clicked, this, &QDialog::close);
    fillList();
    resize(360, 300);
}

void SetupListDialog::fillList() {
    setupList_->clear();
    const auto& setups = server_.setups().list();
    for (int i = 1; i <= setups.ubound(); ++i)
        setupList_->addItem(text::display(setups[i].name));
}

void SetupListDialog::onDeleteSetup() {
    const QModelIndexList selected = setupList_->selectionModel()->selectedRows();
    const int s = selected.isEmpty() ? 0 : selected.front().row() + 1;
    // With nothing selected the removal fails before anything has changed: the end of the
    // program, catalogue and settings untouched.
    try {
        removeSetup(server_.setups(), s);
    } catch (const RuntimeError& e) {
        endAfterUnhandledError(server_, dialogs_, this, e);
        close();
        return;
    }
    fillList();
    if (setupList_->count() > 0) setupList_->setCurrentRow(0);
}
