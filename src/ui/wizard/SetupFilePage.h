#pragma once
// The page that asks for an existing ".stp" file: to import it into the catalogue, or (when
// editing) to read it into the wizard's pages.
#include "ui/wizard/WizardPage.h"

class QLabel;
class QLineEdit;

class SetupFilePage : public WizardPage {
    Q_OBJECT
  public:
    explicit SetupFilePage(SetupWizard& wizard);

  protected:
    void next() override;

  private:
    // Puts the file chosen in a file dialog into the box.
    void onBrowse();
    void importOrEdit(const QString& path);
    // The folder of the path in the box when there is one, else the program directory.
    QString dialogFolder() const;

    QLabel* promptLabel_;
    QLineEdit* pathEdit_;
};
