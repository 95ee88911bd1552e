#pragma once
// This machine's Falcon 4 installation checked against the lines of a setup, the way a
// player's own program checks its installation before it reports the lines that failed:
//
//   CURSET@flavour          the configuration flavour (COB, BMS, FF) is that one
//   CHKSIM                  no directory called Sim in the installation's directory
//   CURTHE@theater          the current theater is that one
//   CHKSUM@path@checksum    the file exists and has that checksum text
//   CONFIG@entry@value      the configuration file has a "set" line for the entry with that value
//
// Lines of any other kind are not checked.
#include "basics/VbList.h"
#include "discovery/FalconDiscovery.h"
#include "setups/authoring/WizardState.h"

#include <optional>
#include <string_view>

enum class LineVerdict { Matches, Fails, NotChecked };

class InstallationCheck {
  public:
    // The installation as the setup wizard finds it: the registry key, then the configuration
    // file and its flavour; the file's entries when it can be read.
    static InstallationCheck ofThisMachine();
    explicit InstallationCheck(FalconInstallation falcon);

    const FalconInstallation& installation() const { return falcon_; }
    // The registry names a directory (a missing key gives the bare "\").
    bool found() const { return falcon_.baseDir != "\\"; }

    LineVerdict check(std::string_view line) const;

  private:
    bool configHolds(const std::string& entry, std::string_view value) const;

    FalconInstallation falcon_;
    std::optional<VbList<ConfigOption>> config_; // none when the file cannot be read
};
