#pragma once
// The files chosen for checking, as the file-open dialog hands them over and as the wizard
// takes them: one file is its full path; several are the directory (without a final "\",
// unless it is a drive root) and the bare names, separated by NUL characters. Paths are in
// the installation's Windows form.
#include <QStringList>

#include <string>
#include <vector>

// The dialog's text for the local files chosen.
std::string dialogFileNameText(const QStringList& localPaths);

struct BrowseResult {
    bool outsideInstallation = false;
    std::vector<std::string> relativePaths; // to add, in order
};

// Refused when the text does not begin with falconDir (letter case ignored). Otherwise the
// paths relative to falconDir ("sub\file.dat", or "file.dat" in the top directory).
BrowseResult filesInsideInstallation(const std::string& fileNameText, const std::string& falconDir);
