#pragma once
// The last pages: the setup file written with its checksums ("Please wait..."), and the end.
#include "setups/wizard/WizardPage.h"

class QProgressBar;

class AddSetupF4Frm5 : public WizardPage {
    Q_OBJECT
  public:
    explicit AddSetupF4Frm5(SetupWizard& wizard);
    // Writes the setup once, on the first showing.
    void shown() override;

  protected:
    void reject() override {} // no way out while the file is written

  private:
    void build();

    QProgressBar* ProgressBar1;
    bool alreadyRun_ = false;
};

class AddSetupEndFrm : public WizardPage {
    Q_OBJECT
  public:
    explicit AddSetupEndFrm(SetupWizard& wizard);
};
