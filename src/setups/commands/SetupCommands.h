#pragma once
// The setups managed from a command line, with the same logic as the setup wizard and the
// setup list editor:
//
//   list                          one line per setup: number, name, file
//   create --name NAME [--file PATH]... [--no-sim-folder] [--config ENTRY]...
//                                 a setup from this machine's installation, as the wizard makes it
//   import FILE                   a setup file made elsewhere, copied beside the program
//   remove N                      setup N out of the list; its file stays on disk
//   verify N                      this machine's installation against setup N's lines
//
// args are the words after "setups". Exit status: 0 done; 1 when verify finds lines that fail,
// or when the work failed part-way (a file that could not be read or written: the message
// says which); 2 when the command cannot run as given (an unknown sub-command or option, a
// missing or extra argument, a number that is no listed setup, a file that is missing or
// outside the installation, a configuration entry the installation does not have, a name the
// file system would refuse, no installation at all). With status 2 one line goes to err and
// nothing has been written: arguments are checked before anything is.
#include <QString>
#include <QStringList>
#include <QTextStream>

class SetupCatalogue;

// programDir is where the setup files are written (the catalogue's own directory), with or
// without a final separator.
int runSetupCommand(const QStringList& args, SetupCatalogue& catalogue, const QString& programDir,
                    QTextStream& out, QTextStream& err);
