#pragma once
// Where the program keeps tessark.ini, the setups and the logs.
#include <QString>

struct ProgramDirChoice {
    QString dir;   // with a trailing separator; empty when there is none to be had
    QString error; // why not, for standard error
};

// A requested directory (--dir) must exist and be writable by this user. Without one it is the
// executable's own directory, as a copy put wherever the squadron likes expects; but where this
// user may not write there (an installed program), or it lies under /usr (whose programs never
// write beside themselves, even as root), it is the user's data directory,
// QStandardPaths::AppDataLocation (~/.local/share/tessark-server), made when missing.
// An operator's command (make false) only looks: a data directory that is not there yet is named,
// not made, since no server can have run in it.
ProgramDirChoice chooseProgramDir(const QString& requested, const QString& executableDir, bool make = true);
