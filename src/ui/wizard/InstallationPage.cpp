#include "ui/wizard/InstallationPage.h"

#include "basics/Text.h"

#include "ui/wizard/SetupWizard.h"
#include "ui/wizard/WizardPages.h"

#include <QFormLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

InstallationPage::InstallationPage(SetupWizard& wizard) : WizardPage(wizard, "AddSetupF4Frm1") {
    addText(
        "The current installation's path and active theater are shown below. If these are not what you "
        "wanted, then exit this wizard, make the installation you want active, and run the wizard again.");
    auto* form = new QFormLayout;
    pathEdit_ = new QLineEdit(this);
    pathEdit_->setObjectName("Text1");
    theaterEdit_ = new QLineEdit(this);
    theaterEdit_->setObjectName("Text2");
    for (QLineEdit* field : {pathEdit_, theaterEdit_})
        field->setReadOnly(true);
    form->addRow("Path:", pathEdit_);
    form->addRow("Theater:", theaterEdit_);
    content()->addLayout(form);
    content()->addStretch();
    nextButton()->setFocus(); // nothing to fill in here

    // Editing found the installation already, when it read the setup.
    WizardState& state = wizard_.state();
    if (!state.editMode) readInstallationKey(state.falcon);
    pathEdit_->setText(text::display(state.falcon.baseDir));
    theaterEdit_->setText(text::display(state.falcon.theater));
    if (!state.editMode) chooseConfigFile(state.falcon);
}

void InstallationPage::next() {
    wizard_.showPage(new NamePage(wizard_));
}
