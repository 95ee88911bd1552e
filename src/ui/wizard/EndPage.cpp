#include "ui/wizard/EndPage.h"

#include "ui/wizard/SetupWizard.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

EndPage::EndPage(SetupWizard& wizard) : WizardPage(wizard, "AddSetupEndFrm", NoButtons) {
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
