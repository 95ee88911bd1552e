#pragma once
// The installation the setup is made from (path and theater), and the setup's name.
#include "setups/wizard/WizardPage.h"

class QLineEdit;

class AddSetupF4Frm1 : public WizardPage {
    Q_OBJECT
  public:
    explicit AddSetupF4Frm1(SetupWizard& wizard);

  protected:
    void next() override;

  private:
    QLineEdit* Text1; // Path:
    QLineEdit* Text2; // Theater:
};

class AddSetupF4Frm2 : public WizardPage {
    Q_OBJECT
  public:
    explicit AddSetupF4Frm2(SetupWizard& wizard);

  protected:
    void next() override;

  private:
    QLineEdit* Text1;
};
