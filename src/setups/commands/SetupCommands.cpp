#include "setups/commands/SetupCommands.h"

#include "basics/RuntimeError.h"
#include "basics/Text.h"
#include "setups/SetupCatalogue.h"
#include "setups/authoring/SetupFileBuilder.h"
#include "setups/commands/SubCommands.h"

#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>

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

void addInstallationOptions(QCommandLineParser& parser) {
    parser.addOption({"installation",
                      "A folder holding the simulator's files, for a host without the simulator "
                      "installed; by default this machine's installation.",
                      "DIR"});
    parser.addOption({"theater", "The current theater to record or check with --installation.", "NAME"});
}

FalconInstallation chosenInstallation(const QCommandLineParser& parser) {
    FalconInstallation falcon;
    readInstallationKey(falcon);
    if (parser.isSet("installation")) {
        const QFileInfo dir(parser.value("installation"));
        if (!dir.isDir())
            throw UsageError{"--installation " + parser.value("installation") + ": no such directory"};
        QString base = QDir::cleanPath(dir.absoluteFilePath());
        falcon.baseDir = windowsFilePath(base);
        if (falcon.baseDir.empty() || falcon.baseDir.back() != '\\') falcon.baseDir += '\\';
    } else if (falcon.baseDir == "\\") {
        throw Failure{"no Falcon 4 installation on this machine (no baseDir in HKEY_LOCAL_MACHINE\\" +
                      QString(kFalconRegistryKey) + "); name one with --installation DIR"};
    }
    if (parser.isSet("theater")) falcon.theater = parser.value("theater").toLatin1().toStdString();
    chooseConfigFile(falcon);
    return falcon;
}

QString targetOf(const QString& programDir, const std::string& name, const QString& file) {
    try {
        return setupFilePath(programDir, name);
    } catch (const RuntimeError&) {
        throw UsageError{"the name line of " + file + ", \"" + text::printable(name) +
                         "\", cannot be a file name (it holds one of \\ / : * ? \" < > | or a control "
                         "character, or is a name Windows keeps for a device, such as CON, NUL or COM1)"};
    }
}

QString shownPath(const std::string& windowsPath) {
    const bool drivePath = windowsPath.size() >= 2 && windowsPath[1] == ':';
    return drivePath ? text::display(windowsPath) : localFilePath(windowsPath);
}

int passOn(const CatalogueAnswer& answer, QTextStream& out, QTextStream& err) {
    out << answer.out;
    err << answer.err;
    return answer.status;
}

} // namespace setup_commands

using namespace setup_commands;

namespace {

const QStringList kOperatorCommands{"list", "create", "import", "remove", "verify"};

QString withSeparator(QString dir) {
    if (!dir.isEmpty() && !dir.endsWith('/') && !dir.endsWith('\\'))
#ifdef Q_OS_WIN
        dir += '\\';
#else
        dir += '/';
#endif
    return dir;
}

// Runs a sub-command, turning what it throws into its status and one line on err.
template <typename Run> int guarded(const QString& prefix, QTextStream& out, QTextStream& err, Run&& run) {
    try {
        return run();
    } catch (const UsageError& e) {
        err << prefix << e.message << Qt::endl;
        return 2;
    } catch (const Failure& e) {
        out.flush();
        err << prefix << e.message << Qt::endl;
        return 1;
    } catch (const RuntimeError& e) {
        out.flush();
        err << prefix << "run-time error " << e.number << ": " << QString::fromStdString(e.description())
            << Qt::endl;
        return 1;
    }
}

// The catalogue's requests answer under the command the operator typed.
QString prefixOf(const QString& command) {
    const QString typed = command == "lines"          ? QString("verify")
                          : command == "store-import" ? QString("import")
                          : command == "store-built"  ? QString("create")
                                                      : command;
    return kOperatorCommands.contains(typed) ? "setups " + typed + ": " : QString("setups: ");
}

} // namespace

DirectCatalogue::DirectCatalogue(SetupCatalogue& catalogue, const QString& programDir)
    : catalogue_(catalogue), programDir_(withSeparator(programDir)) {}

qint64 DirectCatalogue::maxSetupBytes() const {
    return catalogue_.limits().setupFileBytes;
}

bool isOperatorSetupCommand(const QString& word) {
    return kOperatorCommands.contains(word);
}

int runSetupCommand(const QStringList& args, CatalogueAccess& catalogue, QTextStream& out, QTextStream& err,
                    const ChecksumProgressReport& progress) {
    const QString command = args.value(0);
    const QStringList arguments = args.mid(1);
    return guarded(prefixOf(command), out, err, [&] {
        if (command == "create") return createSetup(arguments, catalogue, out, err, progress);
        if (command == "import") return importSetup(arguments, catalogue, out, err);
        if (command == "verify") return verifySetup(arguments, catalogue, out, err);
        if (command == "list" || command == "remove") return passOn(catalogue.ask(args), out, err);
        throw UsageError{
            (args.isEmpty() ? QString("missing sub-command") : "unknown sub-command \"" + command + "\"") +
            " (list, create, import, remove or verify)"};
    });
}

CatalogueAnswer serveCatalogueRequest(const QStringList& words, const QByteArray& content,
                                      SetupCatalogue& catalogue, const QString& programDir) {
    CatalogueAnswer answer;
    QTextStream out(&answer.out), err(&answer.err);
    const QString command = words.value(0);
    const QStringList arguments = words.mid(1);
    const QString dir = withSeparator(programDir);
    answer.status = guarded(prefixOf(command), out, err, [&] {
        if (command == "list") return listSetups(arguments, catalogue, out);
        if (command == "remove") return removeSetupCommand(arguments, catalogue, out);
        if (command == "lines") return setupLines(arguments, catalogue, out);
        if (command == "store-import") return storeImported(arguments, content, catalogue, dir, out);
        if (command == "store-built") return storeBuilt(arguments, content, catalogue, dir, out);
        throw UsageError{"unknown sub-command \"" + command + "\" (list, create, import, remove or verify)"};
    });
    out.flush();
    err.flush();
    return answer;
}
