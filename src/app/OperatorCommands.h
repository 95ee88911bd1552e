#pragma once
// The operator's commands on the command line: `status`, `exit` and `setups ...`. They go to
// the server running in the program directory over its control channel; with none running,
// `setups` works on the directory itself and the others say so.
#include <QString>
#include <QStringList>

// Exit statuses beyond a command's own: no server answers in the directory.
inline constexpr int kNoServerRunning = 3;

// Runs the command (its words, from the command name on) and prints its output; returns the
// process's exit status.
int runOperatorCommand(const QString& programDir, const QStringList& words);
