#pragma once
// The configuration entries to be checked, from the installation's configuration file.
#include "setups/wizard/WizardPage.h"

class PickList;

class AddSetupF4Frm4 : public WizardPage {
    Q_OBJECT
  public:
    // Reads the configuration file (when not editing): "File not found" if it is missing.
    explicit AddSetupF4Frm4(SetupWizard& wizard);

  protected:
    void next() override;

  private:
    PickList* List1;
};
