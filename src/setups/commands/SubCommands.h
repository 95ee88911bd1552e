#pragma once
// What the sub-commands of the setup commands share: how a command refuses its arguments, the
// reading of positional arguments and setup numbers, and the installation a command works on.
#include "setups/InstallationCheck.h"
#include "setups/commands/SetupCommands.h"

#include <QString>
#include <QStringList>
#include <QTextStream>

class QCommandLineParser;
class SetupCatalogue;

namespace setup_commands {

// The command cannot run as given; nothing has been changed. The message is one line.
struct UsageError {
    QString message;
};

// The work failed (no installation, a file that cannot be read): status 1, one line.
struct Failure {
    QString message;
};

// Parses the arguments of `command` with the parser's options (QCommandLineParser takes the
// first word for the program's name, so it is given one); an unknown option or a missing
// value is a UsageError.
void parseOrRefuse(QCommandLineParser& parser, const QString& command, const QStringList& arguments);

// Exactly `names.size()` positional arguments and no options.
QStringList positionalArguments(const QString& command, const QStringList& arguments,
                                const QStringList& names);

// The number of a listed setup, 1..count.
int setupNumber(const QString& text, const SetupCatalogue& catalogue);

// "1 line", "3 lines".
QString lineCount(int n);

// --installation DIR and --theater NAME, for the commands that read an installation.
void addInstallationOptions(QCommandLineParser& parser);
// The installation the options name, else this machine's (the registry); a Failure when there
// is none.
FalconInstallation chosenInstallation(const QCommandLineParser& parser);

// The path a setup file takes from its name line, which must make a file name; the command
// line's FILE names the file in the message.
QString targetOf(const QString& programDir, const std::string& name, const QString& file);

// An installation's path as the operator knows it: "C:\Falcon4\" as the registry names it, a
// folder named with --installation as the local file system does.
QString shownPath(const std::string& windowsPath);

// A catalogue request's answer passed on: its output to out, its error line to err.
int passOn(const CatalogueAnswer& answer, QTextStream& out, QTextStream& err);

// The command line's side.
int createSetup(const QStringList& arguments, CatalogueAccess& catalogue, QTextStream& out, QTextStream& err,
                const ChecksumProgressReport& progress);
int importSetup(const QStringList& arguments, CatalogueAccess& catalogue, QTextStream& out, QTextStream& err);
int verifySetup(const QStringList& arguments, CatalogueAccess& catalogue, QTextStream& out, QTextStream& err);

// The catalogue's side.
int listSetups(const QStringList& arguments, SetupCatalogue& catalogue, QTextStream& out);
int removeSetupCommand(const QStringList& arguments, SetupCatalogue& catalogue, QTextStream& out);
int setupLines(const QStringList& arguments, SetupCatalogue& catalogue, QTextStream& out);
int storeImported(const QStringList& arguments, const QByteArray& content, SetupCatalogue& catalogue,
                  const QString& programDir, QTextStream& out);
int storeBuilt(const QStringList& arguments, const QByteArray& content, SetupCatalogue& catalogue,
               const QString& programDir, QTextStream& out);

} // namespace setup_commands
