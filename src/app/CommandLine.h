#pragma once
// The command line, in Qt's conventions: --dir for the run, --help and --version.
// It is read before the single-instance lock and needs no display, so it answers beside a
// running server. The words after the options, if any, are an operator's command (status,
// exit, setups ...) for the server of the program directory.
#include <QString>
#include <QStringList>

#include <cstdio>
#include <optional>

// The executable's name, as --version and the messages give it.
inline constexpr char kExecutableName[] = "tessark-server";

// A mistake on the command line: an unknown option, a missing value, a command.
inline constexpr int kUsageErrorStatus = 2;

struct CommandLine {
    // Set when the program ends at once with this status (help, version, a mistake), after
    // what it had to say is printed.
    std::optional<int> exitStatus;
    // --dir as given; empty for the default.
    QString programDir;
    // --config as given; empty for tessark-server.conf in the program directory.
    QString settingsFile;
    // The operator's command and its words; empty to run the server.
    QStringList command;
};

// Reads QCoreApplication::arguments() (the program's name first, Qt's own options removed).
// --help and --version are printed through tellUser and end with status 0; --help-all ends the
// process in here (Qt's QCommandLineParser::process()).
CommandLine readCommandLine(const QStringList& arguments);

// "1.1.0", the project's version.
QString programVersion();

// Prints a line for whoever started the program (stdout or stderr). A Windows program for the
// desktop writes to its redirected output or joins the console it was started from; started
// with neither (from Explorer), it shows the text in a message box.
void tellUser(const QString& text, std::FILE* stream);
