#pragma once
// The operator's forms for setups, one page at a time: the Add Setup wizard (its pages, the
// import/edit page) and the state they share. A page's "Next" unloads it and shows the next;
// "Cancel" (or its close box) only unloads it, which ends the run with nothing written.
// Pages are application-modal but do not block the event loop, so the server keeps serving.
#include "setups/authoring/WizardState.h"
#include "ui/wizard/WizardPage.h"

#include <QObject>
#include <QPointer>
#include <QSize>

#include <functional>

class Server;
class OperatorDialogs;
class QWidget;

class SetupWizard : public QObject {
    Q_OBJECT
  public:
    SetupWizard(Server& server, OperatorDialogs& dialogs, QWidget* owner);
    ~SetupWizard() override;

    // "Add Setup...": the first page.
    void start();
    // Unloads the page on show (if any) and shows `next` in its place, at its size.
    void showPage(WizardPage* next);
    void unloadCurrent();
    // Runs a handler that has no error handling: a run-time error in it is the end of the
    // program, after which no page is left.
    void runUnhandled(QWidget* page, const std::function<void()>& handler);

    WizardPage* currentPage() const { return current_; }
    WizardState& state() { return state_; }
    Server& server() { return server_; }
    OperatorDialogs& dialogs() { return dialogs_; }
    QWidget* owner() const { return owner_; }

  private:
    Server& server_;
    OperatorDialogs& dialogs_;
    QWidget* owner_;
    WizardState state_;
    QPointer<WizardPage> current_;
    QSize pageSize_{460, 320};
};
