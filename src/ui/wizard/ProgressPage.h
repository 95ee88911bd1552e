#pragma once
// The setup file written with its checksums, a progress bar moving while they run.
#include "ui/wizard/WizardPage.h"

class QProgressBar;

class ProgressPage : public WizardPage {
    Q_OBJECT
  public:
    explicit ProgressPage(SetupWizard& wizard);
    // Writes the setup once, on the first showing.
    void shown() override;

  protected:
    void reject() override {} // no way out while the file is written

  private:
    void writeSetup();

    QProgressBar* progressBar_;
    bool started_ = false;
};
