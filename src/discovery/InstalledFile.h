#pragma once
// A file that a setup names inside an installation ("CHKSUM@data\file.dat@..."): setups come
// from elsewhere, so the name is taken as a claim about the installation and nothing more. It
// names a file only while that file, with every "..", drive letter and symbolic link followed,
// is a regular file inside the installation's directory; anything else (the server's own
// memory map, a device, a file of another user's) is as good as missing.
#include <QString>

#include <string>

// The local path of baseDir + relative (both in the installation's Windows form), resolved;
// "" when there is no such regular file inside baseDir.
QString installedFilePath(const std::string& baseDir, const std::string& relative);
