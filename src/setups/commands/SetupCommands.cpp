#include "setups/commands/SetupCommands.h"

#include "basics/RuntimeError.h"
#include "setups/SetupCatalogue.h"
#include "setups/commands/SubCommands.h"

#include <QCommandLineParser>

namespace setup_commands {

void parseOrRefuse(QCommandLineParser& parser, const QString& command, const QStringList& arguments) {
    if (!parser.parse(QStringList("setups " + command) + arguments)) throw UsageError{parser.errorText()};
}

QStringList positionalArguments(const QString& command, const QStringList& arguments,
                                const QStringList& names) {
    QCommandLineParser parser;
    parseOrRefuse(parser, command, arguments);
    const QStringList given = parser.positionalArguments();
    if (given.size() < names.size()) throw UsageError{"missing " + names[given.size()]};
    if (given.size() > names.size()) throw UsageError{"unexpected argument \"" + given[names.size()] + "\""};
    return given;
}

int setupNumber(const QString& word, const SetupCatalogue& catalogue) {
    bool isNumber = false;
    const int n = word.toInt(&isNumber);
    if (!isNumber) throw UsageError{"\"" + word + "\" is not a setup number"};
    const int count = catalogue.list().ubound();
    if (n < 1 || n > count) {
        const QString listed = count == 0   ? QString("no setups are listed")
                               : count == 1 ? QString("only setup 1 is listed")
                                            : QString("setups 1 to %1 are listed").arg(count);
        throw UsageError{"there is no setup " + word + " (" + listed + ")"};
    }
    return n;
}

QString lineCount(int n) {
    return QString("%1 line%2").arg(n).arg(n == 1 ? "" : "s");
}

} // namespace setup_commands

using namespace setup_commands;

int runSetupCommand(const QStringList& args, SetupCatalogue& catalogue, const QString& programDir,
                    QTextStream& out, QTextStream& err) {
    const QString command = args.value(0);
    const QStringList arguments = args.mid(1);
    QString dir = programDir;
    if (!dir.isEmpty() && !dir.endsWith('/') && !dir.endsWith('\\'))
#ifdef Q_OS_WIN
        dir += '\\';
#else
        dir += '/';
#endif
    const QStringList known{"list", "create", "import", "remove", "verify"};
    const QString prefix = known.contains(command) ? "setups " + command + ": " : QString("setups: ");
    try {
        if (command == "list") return listSetups(arguments, catalogue, out);
        if (command == "create") return createSetup(arguments, catalogue, dir, out);
        if (command == "import") return importSetup(arguments, catalogue, dir, out);
        if (command == "remove") return removeSetupCommand(arguments, catalogue, out);
        if (command == "verify") return verifySetup(arguments, catalogue, out);
        throw UsageError{
            (args.isEmpty() ? QString("missing sub-command") : "unknown sub-command \"" + command + "\"") +
            " (list, create, import, remove or verify)"};
    } catch (const UsageError& e) {
        err << prefix << e.message << Qt::endl;
        return 2;
    } catch (const RuntimeError& e) {
        out.flush();
        err << prefix << "run-time error " << e.number << ": " << QString::fromStdString(e.description())
            << Qt::endl;
        return 1;
    }
}
