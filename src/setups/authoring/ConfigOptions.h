#pragma once
// The entries of a Falcon configuration file that a setup can require: every line of the form
// "SET <name> <value>" (the "SET " in any case), in file order, nothing ticked.
#include "setups/authoring/WizardState.h"

#include <QString>

// Raises "File not found" when the file cannot be read.
VbList<ConfigOption> readConfigOptions(const QString& localPath);

// One line: true and the entry when it has that shape.
bool parseConfigLine(const std::string& line, ConfigOption& option);
