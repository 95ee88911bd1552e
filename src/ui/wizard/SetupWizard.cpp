#include "ui/wizard/SetupWizard.h"

#include "ui/wizard/OperatorDialogs.h"
#include "ui/wizard/WizardPages.h"

SetupWizard::SetupWizard(Server& server, OperatorDialogs& dialogs, QWidget* owner)
    : server_(server), dialogs_(dialogs), owner_(owner) {}

SetupWizard::~SetupWizard() {
    unloadCurrent();
}

void SetupWizard::start() {
    runUnhandled(owner_, [&] { showPage(new ChoicePage(*this)); });
}

void SetupWizard::showPage(WizardPage* next) {
    // Every page in one place and of one size (what the operator made it, grown to fit the
    // page), so the wizard does not jump from page to page.
    if (current_) {
        pageSize_ = current_->size();
        next->move(current_->pos());
    }
    pageSize_ = pageSize_.expandedTo(next->minimumSizeHint());
    next->resize(pageSize_);
    unloadCurrent();
    current_ = next;
    next->setWindowModality(Qt::ApplicationModal);
    next->show();
    next->shown();
}

void SetupWizard::unloadCurrent() {
    if (!current_) return;
    WizardPage* page = current_;
    current_ = nullptr;
    page->hide();
    page->deleteLater();
}

void SetupWizard::runUnhandled(QWidget* page, const std::function<void()>& handler) {
    try {
        handler();
    } catch (const RuntimeError& e) {
        endAfterUnhandledError(server_, dialogs_, page, e);
        unloadCurrent();
    }
}
