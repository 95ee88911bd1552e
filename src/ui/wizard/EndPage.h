#pragma once
// The end of a run that wrote or imported a setup: "Finish" closes the wizard.
#include "ui/wizard/WizardPage.h"

class EndPage : public WizardPage {
    Q_OBJECT
  public:
    explicit EndPage(SetupWizard& wizard);
};
