#include "ui/wizard/SetupFilePage.h"

#include "server/Server.h"
#include "setups/SetupCatalogue.h"
#include "setups/authoring/SetupImport.h"
#include "ui/wizard/OperatorDialogs.h"
#include "ui/wizard/SetupWizard.h"
#include "ui/wizard/WizardPages.h"

#include <QDir>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

SetupFilePage::SetupFilePage(SetupWizard& wizard) : WizardPage(wizard, "AddSetupFileFrm1") {
    promptLabel_ = new QLabel(this);
    promptLabel_->setObjectName("Label1");
    promptLabel_->setText(wizard_.state().editMode ? "Select the file that you want to edit.."
                                                   : "Select the file that you want to import...");
    content()->addWidget(promptLabel_);
    auto* row = new QHBoxLayout;
    pathEdit_ = new QLineEdit(this);
    pathEdit_->setObjectName("Text1");
    pathEdit_->setFocus();
    auto* browse = new QPushButton("Browse", this);
    browse->setObjectName("Command3");
    row->addWidget(pathEdit_);
    row->addWidget(browse);
    content()->addLayout(row);
    content()->addStretch();
    connect(browse, &QPushButton::clicked, this, &SetupFilePage::onBrowse);
}

void SetupFilePage::onBrowse() {
    const QStringList chosen =
        wizard_.dialogs().openFiles(this, "Open Setup File...", dialogFolder(), "Setup Files (*.stp)", false);
    if (!chosen.isEmpty()) pathEdit_->setText(chosen.front()); // cancelled: the path stays as it was
    if (!pathEdit_->text().isEmpty()) nextButton()->setFocus();
}

QString SetupFilePage::dialogFolder() const {
    const QFileInfo shown(pathEdit_->text());
    if (!pathEdit_->text().isEmpty() && shown.absoluteDir().exists()) return shown.absolutePath();
    return wizard_.server().appDir(); // where the setups are
}

void SetupFilePage::next() {
    const QString path = pathEdit_->text();
    if (!QFileInfo(path).isFile()) {
        wizard_.dialogs().errorBox(
            this, "The file that you specified doesn't exist. Please specify another file", "Error");
        return;
    }
    // This handler has its own error handling: the operator is told and stays on the page.
    try {
        importOrEdit(path);
    } catch (const RuntimeError&) {
        wizard_.dialogs().errorBox(
            this, "An Error occured. Make sure the file you tried to import or edit is valid.", "Error");
    }
}

void SetupFilePage::importOrEdit(const QString& path) {
    if (wizard_.state().editMode) {
        readSetupForEdit(wizard_.state(), path, wizard_.server().setups().limits().setupFileBytes);
        wizard_.showPage(new InstallationPage(wizard_));
    } else {
        Server& server = wizard_.server();
        importSetupFile(server.setups(), server.appDir(), path);
        wizard_.showPage(new EndPage(wizard_));
    }
}
