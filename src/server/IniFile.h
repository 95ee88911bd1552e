#pragma once
// tessark.ini access with the rules of the Windows profile functions, kept on every platform:
// sections and keys match without regard to case, keys are written in upper case, sections
// and keys are created on demand, values read are cut at 749 characters, and a missing
// file, section or key reads "".
#include <QString>

#include <string>

std::string ReadINI(const std::string& section, const std::string& key, const QString& fileName);
void WriteINI(const std::string& section, const std::string& key, const std::string& value,
              const QString& fileName);
