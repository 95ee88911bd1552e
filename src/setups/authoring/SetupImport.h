#pragma once
// Reading an existing ".stp" file back: into the wizard's pages to edit it, or as a copy into
// the program directory to offer it to players.
#include "setups/authoring/WizardState.h"

#include <QByteArray>
#include <QString>

class SetupCatalogue;

// Edit: the current installation is discovered again and its configuration entries read; the
// file's name line becomes SetupName, its CHKSUM paths the chosen files, its CONFIG names tick
// the entries of that name, and CHKSIM sets the "Sim" check (which is otherwise left as the
// last run left it). Stored checksums, values, flavour and theater are not kept: the rewrite
// takes them from the installation as it is now.
// A file beyond maxBytes raises the run-time error of CappedRead.h, unread.
void readSetupForEdit(WizardState& state, const QString& localPath, qint64 maxBytes);

// Import: the file is copied verbatim to appDir + its name line + ".stp" (unless that is the
// file itself) and catalogued, duplicates and all. Raises "Input past end of file" (62) for a
// file without even a name line, and the catalogue's cap on setup files applies. A failure to
// write leaves any old file of that name as it was.
void importSetupFile(SetupCatalogue& setups, const QString& appDir, const QString& chosenPath);
// The same for a file's content read elsewhere (by the command line, say); chosenPath is the file
// it came from, compared with the target as above. Content beyond the cap is refused unwritten.
void importSetupContent(SetupCatalogue& setups, const QString& appDir, const QByteArray& content,
                        const QString& chosenPath);
