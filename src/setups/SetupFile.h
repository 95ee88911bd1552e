#pragma once
// The ".stp" setup file: line 1 is the setup's name exactly as typed, then one record per line
// ("CURSET@COB", "CHKSIM", "CURTHE@...", "CHKSUM@path@checksum", "CONFIG@name@value"), CR LF
// line ends, single-byte text. Readers trim blanks and skip blank and "//" comment lines.
#include "basics/VbList.h"
#include "basics/WholeFile.h"

#include <QString>

#include <string>
#include <string_view>
#include <vector>

struct SetupFileLines {
    std::string name;                 // line 1, raw
    std::vector<std::string> records; // the trimmed record lines, in file order
};

// Reads a setup file for the catalogue; "File not found" when it cannot be opened, and the
// run-time error of CappedRead.h when it holds more than maxBytes (FileLimits::setupFileBytes).
SetupFileLines readSetupFile(const QString& path, qint64 maxBytes);

// Every line of a file as read (line ends removed), under the same cap.
std::vector<std::string> readRawLines(const QString& path, qint64 maxBytes);

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

// Writes a setup file line by line, replacing any file of that name once close() has it whole:
// until then, and on any failure, the old file stays as it was (see WholeFile.h for the
// run-time errors).
class SetupFileWriter {
  public:
    explicit SetupFileWriter(const QString& path) : file_(path) {}
    void line(std::string_view text);
    void close() { file_.commit(); }

  private:
    WholeFileWriter file_;
};
