#include "ui/wizard/NamePage.h"

#include "basics/Text.h"

#include "ui/wizard/SetupWizard.h"
#include "ui/wizard/WizardPages.h"

#include <QLineEdit>
#include <QVBoxLayout>

NamePage::NamePage(SetupWizard& wizard) : WizardPage(wizard, "AddSetupF4Frm2") {
    addText("Enter a name for your installation:");
    nameEdit_ = new QLineEdit(this);
    nameEdit_->setObjectName("Text1");
    const WizardState& state = wizard_.state();
    nameEdit_->setText(state.editMode ? text::display(state.setupName) : QString("New Install"));
    nameEdit_->selectAll(); // what is typed replaces it
    nameEdit_->setFocus();
    content()->addWidget(nameEdit_);
    content()->addStretch();
}

void NamePage::next() {
    // Taken as typed: a name the file system refuses fails when the file is written.
    wizard_.state().setupName = nameEdit_->text().toLatin1().toStdString();
    wizard_.showPage(new FilesPage(wizard_));
}
