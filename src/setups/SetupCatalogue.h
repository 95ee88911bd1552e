#pragma once
// The setups offered to players: paths in tessark.ini ([SETUPLIST] NUM, [SETUPLISTi] FNAME),
// names and record lines from the ".stp" files. A setup's number is its position in Setups.
// Every change ends with the commit sequence: SaveINI, InitSetups, LoadSetups.
#include "server/VbList.h"

#include <QString>

#include <cstdint>
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

    // Sending the catalogue to a player: the list of setups by number and name (the player's
    // mark goes back to "-" first), and one setup's record lines exactly as loaded.
    void SendSetupList(int16_t player);
    void SendSetup(int16_t setupNumber, int16_t player);

    const VbList<SetupRecord>& Setups() const { return Setups_; }
    // The record lines of setup n; "Subscript out of range" outside 1..ubound (element 0 is
    // a placeholder without lines).
    const VbList<std::string>& linesOf(long setupNumber) const;
    // The same, or none for a number outside the catalogue.
    const VbList<std::string>* findLines(long setupNumber) const;
    // For the operator's forms, which edit the list and then commit().
    VbList<SetupRecord>& editableSetups() { return Setups_; }
    int16_t SetupCount() const { return SetupCount_; }

  private:
    Server& server_;
    VbList<SetupRecord> Setups_;
    // A 16-bit count, like every setup number a player can ask for.
    int16_t SetupCount_ = 0;
};
