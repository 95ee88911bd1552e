// The catalogue's side of the setup commands: list and remove as the setup list editor does,
// a setup's lines for a verify, and the storing of a setup file that a command line read or
// built, as the wizard's import and last step store theirs.
#include "basics/CappedRead.h"
#include "basics/OperatorLog.h"
#include "basics/Text.h"
#include "setups/SetupCatalogue.h"
#include "setups/authoring/SetupFileBuilder.h"
#include "setups/authoring/SetupImport.h"
#include "setups/authoring/SetupRemoval.h"
#include "setups/commands/SubCommands.h"

#include <QCommandLineParser>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

namespace setup_commands {
namespace {

QJsonObject setupJson(int n, const SetupRecord& setup) {
    QJsonArray lines;
    for (int k = 1; k <= setup.lines.ubound(); ++k)
        lines.append(text::display(setup.lines[k]));
    QJsonObject json{{"number", n},
                     {"name", text::display(setup.name)},
                     {"file", text::display(setup.filePath)},
                     {"lines", lines}};
    if (!setup.problem.isEmpty()) json.insert("problem", setup.problem);
    return json;
}

} // namespace

int listSetups(const QStringList& arguments, SetupCatalogue& catalogue, QTextStream& out) {
    QCommandLineParser parser;
    parser.addOption({"json", "As JSON."});
    parseOrRefuse(parser, "list", arguments);
    if (!parser.positionalArguments().isEmpty())
        throw UsageError{"unexpected argument \"" + parser.positionalArguments().front() + "\""};
    const auto& setups = catalogue.list();
    if (parser.isSet("json")) {
        QJsonArray list;
        for (int i = 1; i <= setups.ubound(); ++i)
            list.append(setupJson(i, setups[i]));
        const QJsonObject json{{"schema", "tessark-setups"}, {"version", 1}, {"setups", list}};
        out << QJsonDocument(json).toJson(QJsonDocument::Indented);
        return 0;
    }
    if (setups.ubound() == 0) {
        out << "No setups are listed.\n";
        return 0;
    }
    // Columns as wide as their widest entry: the number right-aligned, the name left-aligned,
    // the file last so that nothing trails it but what is wrong with it. A setup whose file was
    // missing at load has an empty name, as players are offered it.
    const qsizetype numberWidth = QString::number(setups.ubound()).size();
    qsizetype nameWidth = QString("Name").size();
    for (int i = 1; i <= setups.ubound(); ++i)
        nameWidth = std::max(nameWidth, text::printable(setups[i].name).size());
    auto row = [&](const QString& number, const QString& name, const QString& file, const QString& problem) {
        out << number.rightJustified(numberWidth) << "  " << name.leftJustified(nameWidth) << "  " << file
            << (problem.isEmpty() ? QString() : "  (" + problem + ")") << "\n";
    };
    row("#", "Name", "File", {});
    for (int i = 1; i <= setups.ubound(); ++i)
        row(QString::number(i), text::printable(setups[i].name), text::printable(setups[i].filePath, 4096),
            setups[i].problem);
    return 0;
}

int removeSetupCommand(const QStringList& arguments, SetupCatalogue& catalogue, QTextStream& out) {
    const int n = setupNumber(positionalArguments("remove", arguments, {"N"}).front(), catalogue);
    const SetupRecord removed = catalogue.list()[n];
    removeSetup(catalogue, n);
    qCInfo(lcSetups, "setup %d \"%s\" removed by a command; its file stays", n,
           qUtf8Printable(text::printable(removed.name)));
    // A setup whose file gave nothing has no name to show; what was wrong is said instead.
    out << "Removed setup " << n << ": "
        << (removed.problem.isEmpty() ? text::printable(removed.name) : "(its file " + removed.problem + ")")
        << "\n";
    if (removed.problem != "not found")
        out << "Its file stays on disk: " << text::printable(removed.filePath, 4096) << "\n";
    return 0;
}

int setupLines(const QStringList& arguments, SetupCatalogue& catalogue, QTextStream& out) {
    const int n = setupNumber(positionalArguments("verify", arguments, {"N"}).front(), catalogue);
    out << QJsonDocument(setupJson(n, catalogue.list()[n])).toJson(QJsonDocument::Compact);
    return 0;
}

int storeImported(const QStringList& arguments, const QByteArray& content, SetupCatalogue& catalogue,
                  const QString& programDir, QTextStream& out) {
    QCommandLineParser parser;
    parser.addOption({"in-place", "The file already lies beside the program under its name."});
    parseOrRefuse(parser, "import", arguments);
    const QString file = parser.positionalArguments().value(0);
    std::string_view nameLine;
    if (!text::LineCursor(bytesView(content)).next(nameLine))
        throw UsageError{file + " is empty: its first line must be the setup's name"};
    const std::string name(nameLine);
    const QString target = targetOf(programDir, name, file);
    const bool inPlace = parser.isSet("in-place");
    importSetupContent(catalogue, programDir, content, inPlace ? target : file);
    qCInfo(lcSetups, "setup %d \"%s\" imported by a command from %s",
           static_cast<int>(catalogue.list().ubound()), qUtf8Printable(text::printable(name)),
           qUtf8Printable(file));
    out << (inPlace ? "Listed " + target : "Copied " + file + " to " + target) << "\n"
        << "Setup " << catalogue.list().ubound() << ": " << text::printable(name) << "\n";
    return 0;
}

int storeBuilt(const QStringList& arguments, const QByteArray& content, SetupCatalogue& catalogue,
               const QString& programDir, QTextStream& out) {
    const QString name = positionalArguments("create", arguments, {"NAME"}).front();
    const std::string setupName = name.toLatin1().toStdString();
    const QString path = targetOf(programDir, setupName, "--name");
    if (content.size() > catalogue.limits().setupFileBytes)
        throw UsageError{"the setup built is larger than a setup file may be ([files] max-setup-size)"};
    const std::vector<std::string> lines = text::splitLines(bytesView(content));
    if (lines.empty() || lines.front() != setupName) throw UsageError{"the setup built is not named " + name};
    const bool replaced = QFileInfo::exists(path);
    storeBuiltSetup(catalogue, setupName, path, lines);
    out << (replaced ? "Rewrote " : "Wrote ") << path << "\n";
    for (const std::string& line : lines)
        out << "  " << text::printable(line, 4096) << "\n";
    const auto& setups = catalogue.list();
    for (int i = 1; i <= setups.ubound(); ++i)
        if (setups[i].name == setupName) {
            qCInfo(lcSetups, "setup %d \"%s\" %s by a command", i, qUtf8Printable(text::printable(setupName)),
                   replaced ? "rewritten" : "created");
            out << "Setup " << i << ": " << name << "\n";
            break;
        }
    return 0;
}

} // namespace setup_commands
