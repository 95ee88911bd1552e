#pragma once
// What the wizard's pages share. One instance lives as long as the status window: each run
// sets these afresh, except that editing keeps the "Sim" folder check of the last run until
// the edited setup says otherwise.
#include "basics/VbList.h"
#include "discovery/FalconDiscovery.h"

#include <cstdint>
#include <string>

struct ConfigOption {
    std::string name;  // the entry name as written in the configuration file
    std::string value; // the rest of the line, comments and trailing blanks included
    bool checked = false;
};

struct WizardState {
    bool editMode = false;
    std::int16_t choice = 0;
    FalconInstallation falcon;
    std::string setupName;
    VbList<std::string> selectedFiles; // paths relative to the installation's directory, "\" inside
    bool forbidSimFolder = false;
    VbList<ConfigOption> configOptions;
};
