#include "setups/wizard/AddSetupF4Frm1.h"

#include "net/Text.h"

#include "setups/wizard/SetupWizard.h"
#include "setups/wizard/WizardPages.h"

#include <QFormLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

AddSetupF4Frm1::AddSetupF4Frm1(SetupWizard& wizard) : WizardPage(wizard, "AddSetupF4Frm1") {
    addText(
        "The current installation's path and active theater are shown below. If these are not what you "
        "wanted, then exit this wizard, make the installation you want active, and run the wizard again.");
    auto* form = new QFormLayout;
    Text1 = new QLineEdit(this);
    Text1->setObjectName("Text1");
    Text2 = new QLineEdit(this);
    Text2->setObjectName("Text2");
    for (QLineEdit* field : {Text1, Text2})
        field->setReadOnly(true);
    form->addRow("Path:", Text1);
    form->addRow("Theater:", Text2);
    content()->addLayout(form);
    content()->addStretch();
    nextButton()->setFocus(); // nothing to fill in here

    // Editing found the installation already, when it read the setup.
    WizardState& state = wizard_.state();
    if (!state.EditMode) GetFalconRegistry(state.falcon);
    Text1->setText(text::display(state.falcon.FalconDir));
    Text2->setText(text::display(state.falcon.FalconTheater));
    if (!state.EditMode) GetFalconConfig(state.falcon);
}

void AddSetupF4Frm1::next() {
    wizard_.showPage(new AddSetupF4Frm2(wizard_));
}

AddSetupF4Frm2::AddSetupF4Frm2(SetupWizard& wizard) : WizardPage(wizard, "AddSetupF4Frm2") {
    addText("Enter a name for your installation:");
    Text1 = new QLineEdit(this);
    Text1->setObjectName("Text1");
    const WizardState& state = wizard_.state();
    Text1->setText(state.EditMode ? text::display(state.SetupName) : QString("New Install"));
    Text1->selectAll(); // what is typed replaces it
    Text1->setFocus();
    content()->addWidget(Text1);
    content()->addStretch();
}

void AddSetupF4Frm2::next() {
    // Taken as typed: a name the file system refuses fails when the file is written.
    wizard_.state().SetupName = Text1->text().toLatin1().toStdString();
    wizard_.showPage(new AddSetupF4Frm3(wizard_));
}
