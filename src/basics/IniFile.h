#pragma once
// tessark.ini access with the rules of the Windows profile functions, kept on every platform:
// sections and keys match without regard to case, keys are written in upper case, sections
// and keys are created on demand, values read are cut at 749 characters, and a missing
// file, section or key reads "". The file is read under a cap (FileLimits::iniFileBytes): a
// larger one raises its run-time error (see CappedRead.h) rather than being read, and is never
// written over by a change of one key. Every write is whole or nothing (WholeFile.h) and raises
// what it failed with, the old file kept.
#include "basics/FileLimits.h"

#include <QString>

#include <map>
#include <string>
#include <vector>

std::string readIni(const std::string& section, const std::string& key, const QString& fileName,
                    qint64 maxBytes = FileLimits{}.iniFileBytes);
void writeIni(const std::string& section, const std::string& key, const std::string& value,
              const QString& fileName, qint64 maxBytes = FileLimits{}.iniFileBytes);

// The whole file read once, for reading many keys: readIni's answers, without reading and
// scanning the file again for each (a catalogue of thousands of setups starts at once).
class IniSnapshot {
  public:
    IniSnapshot() = default; // as of a missing file
    explicit IniSnapshot(const QString& fileName, qint64 maxBytes = FileLimits{}.iniFileBytes);
    std::string read(const std::string& section, const std::string& key) const;

  private:
    std::map<std::string, std::string> values_; // "section\nkey" in lower case -> first value
};

struct IniEntry {
    std::string section, key, value;
};
// writeIni of each entry in turn, with the file read and written once.
void writeIniAll(const std::vector<IniEntry>& entries, const QString& fileName,
                 qint64 maxBytes = FileLimits{}.iniFileBytes);
// The file written afresh with these entries alone, whatever it held.
void replaceIni(const std::vector<IniEntry>& entries, const QString& fileName);
