#include "ui/wizard/ChoicePage.h"

#include "ui/wizard/SetupWizard.h"
#include "ui/wizard/WizardPages.h"

#include <QRadioButton>
#include <QVBoxLayout>

ChoicePage::ChoicePage(SetupWizard& wizard) : WizardPage(wizard, "AddSetupFrm1") {
    addText("This wizard will guide you to correctly add a setup of Falcon4, to be verified by the clients.");
    addText("Select one of the options below.");
    const char* captions[3] = {
        "I want to import an already created file.",
        "I want to create a new setup based on my current installation of Falcon 4.",
        "I want to edit an already created setup based on my current installation of Falcon 4."};
    for (int i = 0; i < 3; ++i) {
        choiceButtons_[i] = new QRadioButton(captions[i], this);
        choiceButtons_[i]->setObjectName(QString("Option1_%1").arg(i));
        content()->addWidget(choiceButtons_[i]);
    }
    choiceButtons_[1]->setChecked(true); // making a new setup is what the wizard is mostly for
    choiceButtons_[1]->setFocus();       // the arrows choose another, Enter goes on
    content()->addStretch();
    wizard_.state().editMode = false;
}

void ChoicePage::next() {
    WizardState& state = wizard_.state();
    for (std::int16_t i = 0; i < 3; ++i)
        if (choiceButtons_[i]->isChecked()) state.choice = i;
    switch (state.choice) {
    case 0:
        wizard_.showPage(new SetupFilePage(wizard_));
        break;
    case 1:
        wizard_.showPage(new InstallationPage(wizard_));
        break;
    default:
        state.editMode = true;
        wizard_.showPage(new SetupFilePage(wizard_));
    }
}
