#pragma once
#include "ui/wizard/WizardPage.h"

class QRadioButton;

// The first page: import a setup file, create a setup from this installation, or edit one.
class ChoicePage : public WizardPage {
    Q_OBJECT
  public:
    explicit ChoicePage(SetupWizard& wizard);

  protected:
    void next() override;

  private:
    QRadioButton* choiceButtons_[3];
};
