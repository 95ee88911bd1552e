#pragma once
// The setups offered to players: paths in tessark.ini ([SETUPLIST] NUM, [SETUPLISTi] FNAME),
// names and record lines from the ".stp" files. A setup's number is its position in the list.
// Every change ends with commit(): the list written, read back, and the files loaded again.
#include "basics/ErrorLog.h"
#include "basics/FileLimits.h"
#include "basics/StatusDisplay.h"
#include "basics/VbList.h"

#include <QString>

#include <cstdint>
#include <string>

struct SetupRecord {
    std::string name;
    std::string filePath;
    VbList<std::string> lines;
    // Why the file gave no name and lines ("not found", "cannot be read", "too large"); empty
    // when it did.
    // Players are offered such a setup all the same, with an empty name.
    QString problem;
};

class SetupCatalogue {
  public:
    // iniFile is tessark.ini; a listed file that is missing is reported on the display.
    SetupCatalogue(QString iniFile, ErrorLog& errorLog, StatusDisplay& display);

    void reset();
    // The list of paths from tessark.ini, without names or lines yet.
    void readList();
    // Each listed file's name and record lines.
    void loadFiles();
    // The list of paths into tessark.ini, which is written afresh with nothing else in it. A
    // failure to write is trapped as every failure of the routine is, told on the operator's
    // log, and then raised to the caller, with the old tessark.ini kept whole.
    void writeList();
    // readList, loadFiles.
    void reload();
    // writeList, readList, loadFiles: the end of every change to the list. When tessark.ini
    // could not be written the list is read back from the file as it stayed, and the failure
    // raised.
    void commit();

    // The caps on tessark.ini and the setup files read from now on.
    void setLimits(const FileLimits& limits) { limits_ = limits; }
    const FileLimits& limits() const { return limits_; }

    const VbList<SetupRecord>& list() const { return setups_; }
    // The record lines of setup n, or none for a number outside the catalogue (element 0 is a
    // placeholder without lines).
    const VbList<std::string>* findLines(long setupNumber) const;
    // For the operator's forms, which edit the list and then commit().
    VbList<SetupRecord>& editableList() { return setups_; }
    int16_t count() const { return count_; }
    const QString& iniFile() const { return iniFile_; }

  private:
    QString iniFile_;
    ErrorLog& errorLog_;
    StatusDisplay& display_;
    FileLimits limits_;
    VbList<SetupRecord> setups_;
    // A 16-bit count, like every setup number a player can ask for.
    int16_t count_ = 0;
};
