#pragma once
// The installation the setup is made from: its path and active theater, shown, not edited.
#include "ui/wizard/WizardPage.h"

class QLineEdit;

class InstallationPage : public WizardPage {
    Q_OBJECT
  public:
    explicit InstallationPage(SetupWizard& wizard);

  protected:
    void next() override;

  private:
    QLineEdit* pathEdit_;
    QLineEdit* theaterEdit_;
};
