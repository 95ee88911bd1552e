#pragma once
// What the wizard's pages share. One instance lives as long as the status window: each run
// sets these afresh, except that editing keeps the "Sim" folder check of the last run until
// the edited setup says otherwise.
#include "server/FalconDiscovery.h"
#include "server/VbList.h"

#include <cstdint>
#include <string>

struct ConfigOption {
    std::string Name;  // the entry name as written in the configuration file
    std::string Value; // the rest of the line, comments and trailing blanks included
    bool Checked = false;
};

struct WizardState {
    bool EditMode = false;
    std::int16_t WizardChoice = 0;
    FalconInstallation falcon;
    std::string SetupName;
    VbList<std::string> SelectedFiles; // paths relative to FalconDir, "\" inside
    bool CheckSimFlag = false;
    VbList<ConfigOption> ConfigOptions;
};
