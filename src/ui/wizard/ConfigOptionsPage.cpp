#include "ui/wizard/ConfigOptionsPage.h"

#include "basics/Text.h"

#include "setups/authoring/ConfigOptions.h"
#include "ui/wizard/PickList.h"
#include "ui/wizard/SetupWizard.h"
#include "ui/wizard/WizardPages.h"

#include <QVBoxLayout>

ConfigOptionsPage::ConfigOptionsPage(SetupWizard& wizard) : WizardPage(wizard, "AddSetupF4Frm4") {
    addText("Select the config options that you want to be checked:");
    optionList_ = new PickList(this);
    optionList_->setObjectName("List1");
    optionList_->setSelectionMode(QAbstractItemView::MultiSelection);
    optionList_->fitRowsToWidth(); // entries run long, comments and all
    optionList_->setFocus();
    content()->addWidget(optionList_);

    WizardState& state = wizard_.state();
    if (!state.editMode) state.configOptions = readConfigOptions(localFilePath(state.falcon.configFile));
    for (int j = 1; j <= state.configOptions.ubound(); ++j) {
        const ConfigOption& option = state.configOptions[j];
        optionList_->addRow(text::display(option.name + " (" + option.value + ")"));
        if (state.editMode && option.checked) optionList_->item(j - 1)->setSelected(true);
    }
}

void ConfigOptionsPage::next() {
    WizardState& state = wizard_.state();
    for (int j = 1; j <= state.configOptions.ubound(); ++j)
        state.configOptions[j].checked = optionList_->item(j - 1)->isSelected();
    wizard_.showPage(new ProgressPage(wizard_));
}
