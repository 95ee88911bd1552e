#include "setups/wizard/AddSetupFileFrm1.h"

#include "server/Server.h"
#include "setups/wizard/OperatorDialogs.h"
#include "setups/wizard/SetupImport.h"
#include "setups/wizard/SetupWizard.h"
#include "setups/wizard/WizardPages.h"

#include <QDir>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

AddSetupFileFrm1::AddSetupFileFrm1(SetupWizard& wizard) : WizardPage(wizard, "AddSetupFileFrm1") {
    Label1 = new QLabel(this);
    Label1->setObjectName("Label1");
    Label1->setText(wizard_.state().EditMode ? "Select the file that you want to edit.."
                                             : "Select the file that you want to import...");
    content()->addWidget(Label1);
    auto* row = new QHBoxLayout;
    Text1 = new QLineEdit(this);
    Text1->setObjectName("Text1");
    Text1->setFocus();
    auto* browse = new QPushButton("Browse", this);
    browse->setObjectName("Command3");
    row->addWidget(Text1);
    row->addWidget(browse);
    content()->addLayout(row);
    content()->addStretch();
    connect(browse, &QPushButton::clicked, this, &AddSetupFileFrm1::Command3_Click);
}

void AddSetupFileFrm1::Command3_Click() {
    const QStringList chosen =
        wizard_.dialogs().openFiles(this, "Open Setup File...", dialogFolder(), "Setup Files (*.stp)", false);
    if (!chosen.isEmpty()) Text1->setText(chosen.front()); // cancelled: the path stays as it was
    if (!Text1->text().isEmpty()) nextButton()->setFocus();
}

QString AddSetupFileFrm1::dialogFolder() const {
    const QFileInfo shown(Text1->text());
    if (!Text1->text().isEmpty() && shown.absoluteDir().exists()) return shown.absolutePath();
    return wizard_.server().appDir(); // where the setups are
}

void AddSetupFileFrm1::next() {
    const QString path = Text1->text();
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

void AddSetupFileFrm1::importOrEdit(const QString& path) {
    if (wizard_.state().EditMode) {
        readSetupForEdit(wizard_.state(), path);
        wizard_.showPage(new AddSetupF4Frm1(wizard_));
    } else {
        Server& server = wizard_.server();
        importSetupFile(server.setups(), server.appDir(), path);
        wizard_.showPage(new AddSetupEndFrm(wizard_));
    }
}
