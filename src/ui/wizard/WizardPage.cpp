#include "ui/wizard/WizardPage.h"

#include "ui/wizard/SetupWizard.h"

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
        nextButton_ = new QPushButton("Next", this);
        nextButton_->setObjectName("Command1");
        nextButton_->setDefault(true);
        cancelButton_ = new QPushButton("Cancel", this);
        cancelButton_->setObjectName("Command2");
        row->addWidget(nextButton_);
        row->addWidget(cancelButton_);
        layout->addLayout(row);
        connect(nextButton_, &QPushButton::clicked, this,
                [this] { wizard_.runUnhandled(this, [this] { next(); }); });
        connect(cancelButton_, &QPushButton::clicked, this, &WizardPage::reject);
    }
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

void WizardPage::showEvent(QShowEvent* event) {
    // The buttons are made before the page's own controls, so they would come first in the
    // tab order: they go after the last control of the page.
    if (!tabOrderSet_ && nextButton_) {
        tabOrderSet_ = true;
        QWidget* last = nullptr;
        for (QWidget* w = nextInFocusChain(); w != this; w = w->nextInFocusChain())
            if (w != nextButton_ && w != cancelButton_ && isAncestorOf(w) &&
                (w->focusPolicy() & Qt::TabFocus))
                last = w;
        if (last) {
            setTabOrder(last, nextButton_);
            setTabOrder(nextButton_, cancelButton_);
        }
    }
    QDialog::showEvent(event);
}
