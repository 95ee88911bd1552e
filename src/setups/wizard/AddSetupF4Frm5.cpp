#include "setups/wizard/AddSetupF4Frm5.h"

#include "server/Server.h"
#include "setups/wizard/SetupFileBuilder.h"
#include "setups/wizard/SetupWizard.h"

#include <QCoreApplication>
#include <QHBoxLayout>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

#include <cmath>

AddSetupF4Frm5::AddSetupF4Frm5(SetupWizard& wizard) : WizardPage(wizard, "AddSetupF4Frm5", NoButtons) {
    addText("Please wait while creating the setup file...");
    ProgressBar1 = new QProgressBar(this);
    ProgressBar1->setObjectName("ProgressBar1");
    ProgressBar1->setRange(0, 100);
    ProgressBar1->setValue(0);
    content()->addWidget(ProgressBar1);
    content()->addStretch();
    alreadyRun_ = false;
}

void AddSetupF4Frm5::shown() {
    if (alreadyRun_) return;
    alreadyRun_ = true;
    // Once the page is painted, so the operator sees it while the checksums run.
    QTimer::singleShot(0, this, [this] { wizard_.runUnhandled(this, [this] { build(); }); });
}

void AddSetupF4Frm5::build() {
    WizardState& state = wizard_.state();
    Server& server = wizard_.server();
    const QString path = setupFilePath(server.appDir(), state.SetupName);
    BuildProgress progress;
    progress.step = [this](int done, int total) {
        ProgressBar1->setValue(static_cast<int>(std::nearbyint(100.0 * done / total)));
        QCoreApplication::processEvents();
    };
    progress.during = [] { QCoreApplication::processEvents(); };
    writeSetupFile(state, path, progress);
    catalogueBuiltSetup(server.setups(), state.SetupName, path);
    wizard_.showPage(new AddSetupEndFrm(wizard_));
}

AddSetupEndFrm::AddSetupEndFrm(SetupWizard& wizard) : WizardPage(wizard, "AddSetupEndFrm", NoButtons) {
    addText("The new Setup file was created succesfully.");
    content()->addStretch();
    auto* row = new QHBoxLayout;
    row->addStretch();
    auto* finish = new QPushButton("Finish", this);
    finish->setObjectName("Command1");
    finish->setDefault(true);
    row->addWidget(finish);
    content()->addLayout(row);
    connect(finish, &QPushButton::clicked, this, [this] { wizard_.unloadCurrent(); });
}
