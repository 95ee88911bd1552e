#pragma once
// The wizard's last step: the ".stp" file from what the pages gathered, with the checksum of
// every chosen file, and the setup's place in the catalogue.
#include "setups/authoring/WizardState.h"

#include <QString>

#include <functional>
#include <string>
#include <vector>

class SetupCatalogue;

// appDir + name + ".stp". A name the file system would refuse (one of \ / : * ? " < > | or a
// control character, refused everywhere so a setup made here can be used on any machine)
// raises "Bad file name or number" (52).
QString setupFilePath(const QString& appDir, const std::string& setupName);

// Called after each step with (steps done, steps in all); the caller lets events run there.
// `during` is called every few MiB inside a file's checksum, with the file (as the setup names
// it) and the bytes read so far.
struct BuildProgress {
    std::function<void(int done, int total)> step;
    std::function<void(const std::string& file, std::int64_t bytesDone)> during;
};

// Writes the setup file, replacing any of that name: name, CURSET, CHKSIM when asked for,
// CURTHE, a CHKSUM line per chosen file, a CONFIG line per ticked entry. A failing checksum or
// write raises its run-time error with the file left as far as it was written.
void writeSetupFile(const WizardState& state, const QString& path, const BuildProgress& progress);
// The same lines, in memory (a command line builds them where the installation is, and the
// catalogue stores them).
std::vector<std::string> buildSetupLines(const WizardState& state, const BuildProgress& progress);
// A built setup's lines written as the setup file at path, then catalogued as a built setup is.
void storeBuiltSetup(SetupCatalogue& setups, const std::string& setupName, const QString& path,
                     const std::vector<std::string>& lines);

// A setup of that name joins the catalogue unless one already has it; the catalogue is then
// read again either way.
void catalogueBuiltSetup(SetupCatalogue& setups, const std::string& setupName, const QString& path);
