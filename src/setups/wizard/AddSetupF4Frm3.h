#pragma once
// The files to be checked, chosen inside the installation, and the "Sim" folder check.
#include "setups/wizard/WizardPage.h"

class QCheckBox;
class PickList;

class AddSetupF4Frm3 : public WizardPage {
    Q_OBJECT
  public:
    explicit AddSetupF4Frm3(SetupWizard& wizard);

  protected:
    void next() override;

  private:
    void Command3_Click(); // Browse
    void Command4_Click(); // DELETE

    PickList* List1;
    QCheckBox* Check1;
};
