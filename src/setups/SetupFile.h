#pragma once
// The ".stp" setup file: line 1 is the setup's name exactly as typed, then one record per line
// ("CURSET@COB", "CHKSIM", "CURTHE@...", "CHKSUM@path@checksum", "CONFIG@name@value"), CR LF
// line ends, single-byte text. Readers trim blanks and skip blank and "//" comment lines.
#include "basics/VbList.h"

#include <QFile>
#include <QString>

#include <string>
#include <string_view>
#include <vector>

struct SetupFileLines {
    std::string name;                 // line 1, raw
    std::vector<std::string> records; // the trimmed record lines, in file order
};

// Reads a setup file for the catalogue; "File not found" when it cannot be opened.
SetupFileLines readSetupFile(const QString& path);

// Every line of a file as read (line ends removed), for copying a setup verbatim on import.
std::vector<std::string> readRawLines(const QString& path);

// Trims blanks (spaces only); empty when the line is blank or a "//" comment.
std::string recordLineOrEmpty(std::string_view line);

// A record line as the import reader sees it: the kind is the first six characters, and the
// values are the parts of the text from character 7 on split at "@", so that value 1 is
// parts[2] for a well-formed line (parts[1] is what stood before the first "@").
struct SetupRecordFields {
    std::string kind;
    VbList<std::string> parts;
    // Value k (1-based), or "" when the line has no such value.
    std::string value(int k) const { return k + 1 <= parts.ubound() ? parts[k + 1] : std::string(); }
};
SetupRecordFields interpretRecordLine(std::string_view line);

// Writes a setup file line by line, replacing any file of that name.
class SetupFileWriter {
  public:
    // "Path/File access error" when the file cannot be created (a name the file system refuses).
    explicit SetupFileWriter(const QString& path);
    void line(std::string_view text);
    void close();

  private:
    QFile file_;
};
