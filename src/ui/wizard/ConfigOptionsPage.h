#pragma once
// The configuration entries to be checked, from the installation's configuration file.
#include "ui/wizard/WizardPage.h"

class PickList;

class ConfigOptionsPage : public WizardPage {
    Q_OBJECT
  public:
    // Reads the configuration file (when not editing): "File not found" if it is missing.
    explicit ConfigOptionsPage(SetupWizard& wizard);

  protected:
    void next() override;

  private:
    PickList* optionList_;
};
