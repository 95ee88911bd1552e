#include "setups/wizard/AddSetupF4Frm4.h"

#include "net/Text.h"

#include "setups/wizard/ConfigOptions.h"
#include "setups/wizard/PickList.h"
#include "setups/wizard/SetupWizard.h"
#include "setups/wizard/WizardPages.h"

#include <QVBoxLayout>

AddSetupF4Frm4::AddSetupF4Frm4(SetupWizard& wizard) : WizardPage(wizard, "AddSetupF4Frm4") {
    addText("Select the config options that you want to be checked:");
    List1 = new PickList(this);
    List1->setObjectName("List1");
    List1->setSelectionMode(QAbstractItemView::MultiSelection);
    List1->fitRowsToWidth(); // entries run long, comments and all
    List1->setFocus();
    content()->addWidget(List1);

    WizardState& state = wizard_.state();
    if (!state.EditMode) state.ConfigOptions = readConfigOptions(localFilePath(state.falcon.FalconCfgFile));
    for (int j = 1; j <= state.ConfigOptions.ubound(); ++j) {
        const ConfigOption& option = state.ConfigOptions[j];
        List1->addRow(text::display(option.Name + " (" + option.Value + ")"));
        if (state.EditMode && option.Checked) List1->item(j - 1)->setSelected(true);
    }
}

void AddSetupF4Frm4::next() {
    WizardState& state = wizard_.state();
    for (int j = 1; j <= state.ConfigOptions.ubound(); ++j)
        state.ConfigOptions[j].Checked = List1->item(j - 1)->isSelected();
    wizard_.showPage(new AddSetupF4Frm5(wizard_));
}
