#include "setups/wizard/AddSetupF4Frm3.h"

#include "net/Text.h"

#include "setups/wizard/FileSelection.h"
#include "setups/wizard/OperatorDialogs.h"
#include "setups/wizard/PickList.h"
#include "setups/wizard/SetupWizard.h"
#include "setups/wizard/WizardPages.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

AddSetupF4Frm3::AddSetupF4Frm3(SetupWizard& wizard) : WizardPage(wizard, "AddSetupF4Frm3") {
    addText("Select the files that you want to be checked:");
    auto* row = new QHBoxLayout;
    List1 = new PickList(this);
    List1->setObjectName("List1");
    List1->setFocus();
    row->addWidget(List1);
    auto* buttons = new QVBoxLayout;
    auto* browse = new QPushButton("Browse", this);
    browse->setObjectName("Command3");
    auto* remove = new QPushButton("DELETE", this);
    remove->setObjectName("Command4");
    buttons->addWidget(browse);
    buttons->addWidget(remove);
    buttons->addStretch();
    row->addLayout(buttons);
    content()->addLayout(row);
    Check1 = new QCheckBox("Do not allow a \"Sim\" folder to exist", this);
    Check1->setObjectName("Check1");
    content()->addWidget(Check1);
    connect(browse, &QPushButton::clicked, this, &AddSetupF4Frm3::Command3_Click);
    connect(remove, &QPushButton::clicked, this, &AddSetupF4Frm3::Command4_Click);

    const WizardState& state = wizard_.state();
    if (state.EditMode) {
        for (int i = 1; i <= state.SelectedFiles.ubound(); ++i)
            List1->addItem(text::display(state.SelectedFiles[i]));
        Check1->setChecked(state.CheckSimFlag);
    }
}

void AddSetupF4Frm3::Command3_Click() {
    // Any failure here (a cancelled dialog included) adds nothing and says nothing.
    try {
        const std::string& falconDir = wizard_.state().falcon.FalconDir;
        const QStringList chosen = wizard_.dialogs().openFiles(
            this, "Select Falcon Files", localFilePath(falconDir), "All Files (*)", true);
        if (chosen.isEmpty()) return;
        const BrowseResult result = filesInsideInstallation(dialogFileNameText(chosen), falconDir);
        if (result.outsideInstallation) {
            wizard_.dialogs().errorBox(this, "Your selection must be inside current Falcon 4 installation",
                                       "Error");
            return;
        }
        for (const std::string& path : result.relativePaths)
            List1->addItem(text::display(path));
        List1->setFocus(); // to what was added; Enter goes on from there
    } catch (const RuntimeError&) {
    }
}

void AddSetupF4Frm3::Command4_Click() {
    const QList<QListWidgetItem*> selected = List1->selectedItems();
    if (selected.isEmpty()) return;
    delete selected.front();
    List1->pickNothing(); // so a second press does not remove the next file
}

void AddSetupF4Frm3::next() {
    WizardState& state = wizard_.state();
    state.CheckSimFlag = Check1->isChecked();
    state.SelectedFiles = VbList<std::string>::withUpperBound(List1->count());
    for (int i = 1; i <= List1->count(); ++i)
        state.SelectedFiles[i] = List1->item(i - 1)->text().toLatin1().toStdString();
    wizard_.showPage(new AddSetupF4Frm4(wizard_));
}
