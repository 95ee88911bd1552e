#include "setups/wizard/AddSetupFrm1.h"

#include "setups/wizard/SetupWizard.h"
#include "setups/wizard/WizardPages.h"

#include <QRadioButton>
#include <QVBoxLayout>

AddSetupFrm1::AddSetupFrm1(SetupWizard& wizard) : WizardPage(wizard, "AddSetupFrm1") {
    addText("This wizard will guide you to correctly add a setup of Falcon4, to be verified by the clients.");
    addText("Select one of the options below.");
    const char* captions[3] = {
        "I want to import an already created file.",
        "I want to create a new setup based on my current installation of Falcon 4.",
        "I want to edit an already created setup based on my current installation of Falcon 4."};
    for (int i = 0; i < 3; ++i) {
        Option1[i] = new QRadioButton(captions[i], this);
        Option1[i]->setObjectName(QString("Option1_%1").arg(i));
        content()->addWidget(Option1[i]);
    }
    Option1[1]->setChecked(true); // making a new setup is what the wizard is mostly for
    Option1[1]->setFocus();       // the arrows choose another, Enter goes on
    content()->addStretch();
    wizard_.state().EditMode = false;
}

void AddSetupFrm1::next() {
    WizardState& state = wizard_.state();
    for (std::int16_t i = 0; i < 3; ++i)
        if (Option1[i]->isChecked()) state.WizardChoice = i;
    switch (state.WizardChoice) {
    case 0:
        wizard_.showPage(new AddSetupFileFrm1(wizard_));
        break;
    case 1:
        wizard_.showPage(new AddSetupF4Frm1(wizard_));
        break;
    default:
        state.EditMode = true;
        wizard_.showPage(new AddSetupFileFrm1(wizard_));
    }
}
