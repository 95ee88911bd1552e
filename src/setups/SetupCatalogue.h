#pragma once
// The setups offered to players: paths in tessark.ini ([SETUPLIST] NUM, [SETUPLISTi] FNAME),
// names and record lines from the ".stp" files. A setup's number is its position in Setups.
// Every change ends with the commit sequence: SaveINI, InitSetups, LoadSetups.
#include "server/VbList.h"

#include <QString>

#include <string>

class Server;

struct SetupRecord {
    std::string Name;
    std::string FilePath;
    VbList<std::string> Lines;
};

class SetupCatalogue {
public:
    explicit SetupCatalogue(Server& server);

    void reset();
    void InitSetups();
    void LoadSetups();
    void SaveINI();
    // SaveINI, InitSetups, LoadSetups: the end of every change to Setups.
    void commit();

    const VbList<SetupRecord>& Setups() const { return Setups_; }
    // For the operator's forms, which edit the list and then commit().
    VbList<SetupRecord>& editableSetups() { return Setups_; }
    long SetupCount() const { return SetupCount_; }

private:
    Server& server_;
    VbList<SetupRecord> Setups_;
    long SetupCount_ = 0;
};
