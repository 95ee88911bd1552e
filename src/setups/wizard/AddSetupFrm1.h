#pragma once
#include "setups/wizard/WizardPage.h"

class QRadioButton;

// The first page: import a setup file, create a setup from this installation, or edit one.
class AddSetupFrm1 : public WizardPage {
    Q_OBJECT
  public:
    explicit AddSetupFrm1(SetupWizard& wizard);

  protected:
    void next() override;

  private:
    QRadioButton* Option1[3];
};
