#pragma once
// What the sub-commands of runSetupCommand share: how a command refuses its arguments, and
// the reading of positional arguments and setup numbers.
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

int listSetups(const QStringList& arguments, SetupCatalogue& catalogue, QTextStream& out);
int createSetup(const QStringList& arguments, SetupCatalogue& catalogue, const QString& programDir,
                QTextStream& out);
int importSetup(const QStringList& arguments, SetupCatalogue& catalogue, const QString& programDir,
                QTextStream& out);
int removeSetupCommand(const QStringList& arguments, SetupCatalogue& catalogue, QTextStream& out);
int verifySetup(const QStringList& arguments, SetupCatalogue& catalogue, QTextStream& out);

} // namespace setup_commands
