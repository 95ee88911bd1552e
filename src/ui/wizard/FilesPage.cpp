#include "ui/wizard/FilesPage.h"

#include "basics/Text.h"

#include "setups/authoring/FileSelection.h"
#include "ui/wizard/OperatorDialogs.h"
#include "ui/wizard/PickList.h"
#include "ui/wizard/SetupWizard.h"
#include "ui/wizard/WizardPages.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

FilesPage::FilesPage(SetupWizard& wizard) : WizardPage(wizard, "AddSetupF4Frm3") {
    addText("Select the files that you want to be checked:");
    auto* row = new QHBoxLayout;
    fileList_ = new PickList(this);
    fileList_->setObjectName("List1");
    fileList_->setFocus();
    row->addWidget(fileList_);
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
    forbidSimFolderBox_ = new QCheckBox("Do not allow a \"Sim\" folder to exist", this);
    forbidSimFolderBox_->setObjectName("Check1");
    content()->addWidget(forbidSimFolderBox_);
    connect(browse, &QPushButton::clicked, this, &FilesPage::onBrowse);
    connect(remove, &QPushButton::clicked, this, &FilesPage::onDelete);

    const WizardState& state = wizard_.state();
    if (state.editMode) {
        for (int i = 1; i <= state.selectedFiles.ubound(); ++i)
            fileList_->addItem(text::display(state.selectedFiles[i]));
        forbidSimFolderBox_->setChecked(state.forbidSimFolder);
    }
}

void FilesPage::onBrowse() {
    // Any failure here (a cancelled dialog included) adds nothing and says nothing.
    try {
        const std::string& falconDir = wizard_.state().falcon.baseDir;
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
            fileList_->addItem(text::display(path));
        fileList_->setFocus(); // to what was added; Enter goes on from there
    } catch (const RuntimeError&) {
    }
}

void FilesPage::onDelete() {
    const QList<QListWidgetItem*> selected = fileList_->selectedItems();
    if (selected.isEmpty()) return;
    delete selected.front();
    fileList_->pickNothing(); // so a second press does not remove the next file
}

void FilesPage::next() {
    WizardState& state = wizard_.state();
    state.forbidSimFolder = forbidSimFolderBox_->isChecked();
    state.selectedFiles = VbList<std::string>::withUpperBound(fileList_->count());
    for (int i = 1; i <= fileList_->count(); ++i)
        state.selectedFiles[i] = fileList_->item(i - 1)->text().toLatin1().toStdString();
    wizard_.showPage(new ConfigOptionsPage(wizard_));
}
