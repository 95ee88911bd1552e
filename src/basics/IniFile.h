#pragma once
// tessark.ini access with the rules of the Windows profile functions, kept on every platform:
// sections and keys match without regard to case, keys are written in upper case, sections
// and keys are created on demand, values read are cut at 749 characters, and a missing
// file, section or key reads "".
#include <QString>

#include <map>
#include <string>
#include <vector>

std::string readIni(const std::string& section, const std::string& key, const QString& fileName);
void writeIni(const std::string& section, const std::string& key, const std::string& value,
              const QString& fileName);

// The whole file read once, for reading many keys: readIni's answers, without reading and
// scanning the file again for each (a catalogue of thousands of setups starts at once).
class IniSnapshot {
  public:
    explicit IniSnapshot(const QString& fileName);
    std::string read(const std::string& section, const std::string& key) const;

  private:
    std::map<std::string, std::string> values_; // "section\nkey" in lower case -> first value
};

struct IniEntry {
    std::string section, key, value;
};
// writeIni of each entry in turn, with the file read and written once.
void writeIniAll(const std::vector<IniEntry>& entries, const QString& fileName);
