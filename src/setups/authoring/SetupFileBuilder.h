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
// control character, or a name Windows keeps for a device: CON, PRN, AUX, NUL, COM1..COM9,
// LPT1..LPT9..., refused everywhere so a setup made here can be used on any machine) raises
// "Bad file name or number" (52).
QString setupFilePath(const QString& appDir, const std::string& setupName);

// Called after each step with (steps done, steps in all); the caller lets events run there.
// `during` is called every few MiB inside a file's checksum, with the file (as the setup names
// it) and the bytes read so far.
struct BuildProgress {
    std::function<void(int done, int total)> step;
    std::function<void(const std::string& file, std::int64_t bytesDone)> during;
};

// Writes the setup file, replacing any of that name: name, CURSET, CHKSIM when asked for,
// CURTHE, a CHKSUM line per chosen file, a CONFIG line per ticked entry. The file is whole or not
// there: a failing checksum or write raises its run-time error with any old file of that name as
// it was. A chosen file that leads out of the installation (see InstalledFile.h) raises "File
// not found" as a missing one does.
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
