#pragma once
// The server machine's own Falcon 4 installation, the reference a setup is made from: its
// directory and current theater from the machine-wide registry key, and which configuration
// file (and so which flavour) it uses.
//
// Paths here are in the installation's own Windows form ("C:\Falcon4\"), as setups record
// them; localFilePath/windowsFilePath cross to and from the local file system (under Wine,
// drive letters live in the prefix: C: is drive_c, other letters come from dosdevices/).
#include <QString>

#include <string>

struct FalconInstallation {
    std::string baseDir;    // base directory with a trailing "\"
    std::string theater;    // current theater
    std::string configFile; // full path of the configuration file chosen
    std::string flavour;    // "COB", "BMS" or "FF"
};

inline constexpr const char* kFalconRegistryKey = "SOFTWARE\\Microprose\\Falcon\\4.0";

// The directory and theater from the registry, every NUL removed. A missing value reads as
// empty text, so a missing installation gives the directory "\" and an empty theater.
void readInstallationKey(FalconInstallation& falcon);
// The configuration file and flavour: cobra.cfg ("COB") if it exists, else FalconBMS.cfg ("BMS")
// if it exists, else FalconSP.cfg ("FF") whether it exists or not.
void chooseConfigFile(FalconInstallation& falcon);

// A Windows-form path as a path of the local file system.
QString localFilePath(const std::string& windowsPath);
// A local path in Windows form, as the installation's own paths are written.
std::string windowsFilePath(const QString& localPath);
