#pragma once
// The page that asks for an existing ".stp" file: to import it into the catalogue, or (when
// editing) to read it into the wizard's pages.
#include "setups/wizard/WizardPage.h"

class QLabel;
class QLineEdit;

class AddSetupFileFrm1 : public WizardPage {
    Q_OBJECT
  public:
    explicit AddSetupFileFrm1(SetupWizard& wizard);

  protected:
    void next() override;

  private:
    void Command3_Click(); // Browse
    void importOrEdit(const QString& path);
    // The folder of the path in the box when there is one, else the program directory.
    QString dialogFolder() const;

    QLabel* Label1;
    QLineEdit* Text1;
};
