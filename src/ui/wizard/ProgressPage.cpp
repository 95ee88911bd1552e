#include "ui/wizard/ProgressPage.h"

#include "server/Server.h"
#include "setups/authoring/SetupFileBuilder.h"
#include "ui/wizard/SetupWizard.h"
#include "ui/wizard/WizardPages.h"

#include <QCoreApplication>
#include <QProgressBar>
#include <QTimer>
#include <QVBoxLayout>

#include <cmath>

ProgressPage::ProgressPage(SetupWizard& wizard) : WizardPage(wizard, "AddSetupF4Frm5", NoButtons) {
    addText("Please wait while creating the setup file...");
    progressBar_ = new QProgressBar(this);
    progressBar_->setObjectName("ProgressBar1");
    progressBar_->setRange(0, 100);
    progressBar_->setValue(0);
    content()->addWidget(progressBar_);
    content()->addStretch();
}

void ProgressPage::shown() {
    if (started_) return;
    started_ = true;
    // Once the page is painted, so the operator sees it while the checksums run.
    QTimer::singleShot(0, this, [this] { wizard_.runUnhandled(this, [this] { writeSetup(); }); });
}

void ProgressPage::writeSetup() {
    WizardState& state = wizard_.state();
    Server& server = wizard_.server();
    const QString path = setupFilePath(server.appDir(), state.setupName);
    BuildProgress progress;
    progress.step = [this](int done, int total) {
        progressBar_->setValue(static_cast<int>(std::nearbyint(100.0 * done / total)));
        QCoreApplication::processEvents();
    };
    progress.during = [](const std::string&, std::int64_t) { QCoreApplication::processEvents(); };
    writeSetupFile(state, path, progress);
    catalogueBuiltSetup(server.setups(), state.setupName, path);
    wizard_.showPage(new EndPage(wizard_));
}
