#pragma once
// The files to be checked, chosen inside the installation, and the "Sim" folder check.
#include "ui/wizard/WizardPage.h"

class QCheckBox;
class PickList;

class FilesPage : public WizardPage {
    Q_OBJECT
  public:
    explicit FilesPage(SetupWizard& wizard);

  protected:
    void next() override;

  private:
    // Adds files chosen in a file dialog, which must lie inside the installation.
    void onBrowse();
    // Removes the picked file.
    void onDelete();

    PickList* fileList_;
    QCheckBox* forbidSimFolderBox_;
};
