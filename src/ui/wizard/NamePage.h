#pragma once
// The setup's name, which is also its file's name.
#include "ui/wizard/WizardPage.h"

class QLineEdit;

class NamePage : public WizardPage {
    Q_OBJECT
  public:
    explicit NamePage(SetupWizard& wizard);

  protected:
    void next() override;

  private:
    QLineEdit* nameEdit_;
};
