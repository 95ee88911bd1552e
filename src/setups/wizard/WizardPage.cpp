#include "setups/wizard/WizardPage.h"

#include "setups/wizard/SetupWizard.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

WizardPage::WizardPage(SetupWizard& wizard, const QString& name, Buttons buttons)
    : QDialog(wizard.owner()), wizard_(wizard) {
    setObjectName(name);
    setWindowTitle("Add Setup Wizard");
    setAttribute(Qt::WA_DeleteOnClose);
    auto* layout = new QVBoxLayout(this);
    content_ = new QVBoxLayout;
    layout->addLayout(content_);
    if (buttons == NextAndCancel) {
        auto* row = new QHBoxLayout;
        row->addStretch();
        auto* nextButton = new QPushButton("Next", this);
        nextButton->setObjectName("Command1");
        nextButton->setDefault(true);
        auto* cancelButton = new QPushButton("Cancel", this);
        cancelButton->setObjectName("Command2");
        row->addWidget(nextButton);
        row->addWidget(cancelButton);
        layout->addLayout(row);
        connect(nextButton, &QPushButton::clicked, this,
                [this] { wizard_.runUnhandled(this, [this] { next(); }); });
        connect(cancelButton, &QPushButton::clicked, this, &WizardPage::reject);
    }
    resize(460, 320);
}

void WizardPage::addText(const QString& text) {
    auto* label = new QLabel(text, this);
    label->setWordWrap(true);
    content_->addWidget(label);
}

void WizardPage::reject() {
    if (wizard_.currentPage() == this)
        wizard_.unloadCurrent();
    else
        QDialog::reject();
}
