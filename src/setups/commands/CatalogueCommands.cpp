// list, import and remove: the catalogue shown and changed as the setup list editor and the
// wizard's import page change it.
#include "basics/Text.h"
#include "setups/SetupCatalogue.h"
#include "setups/authoring/SetupFileBuilder.h"
#include "setups/authoring/SetupImport.h"
#include "setups/authoring/SetupRemoval.h"
#include "setups/commands/SubCommands.h"

#include <QFileInfo>

#include <algorithm>

namespace setup_commands {

int listSetups(const QStringList& arguments, SetupCatalogue& catalogue, QTextStream& out) {
    positionalArguments("list", arguments, {});
    const auto& setups = catalogue.list();
    if (setups.ubound() == 0) {
        out << "No setups are listed.\n";
        return 0;
    }
    // Columns as wide as their widest entry: the number right-aligned, the name left-aligned,
    // the file last so that nothing trails it. A setup whose file was missing at load has an
    // empty name, as players are offered it.
    const qsizetype numberWidth = QString::number(setups.ubound()).size();
    qsizetype nameWidth = QString("Name").size();
    for (int i = 1; i <= setups.ubound(); ++i)
        nameWidth = std::max(nameWidth, text::display(setups[i].name).size());
    auto row = [&](const QString& number, const QString& name, const QString& file) {
        out << number.rightJustified(numberWidth) << "  " << name.leftJustified(nameWidth) << "  " << file
            << "\n";
    };
    row("#", "Name", "File");
    for (int i = 1; i <= setups.ubound(); ++i)
        row(QString::number(i), text::display(setups[i].name), text::display(setups[i].filePath));
    return 0;
}

int importSetup(const QStringList& arguments, SetupCatalogue& catalogue, const QString& programDir,
                QTextStream& out) {
    const QString file = positionalArguments("import", arguments, {"FILE"}).front();
    const QFileInfo chosen(file);
    if (!chosen.isFile()) throw UsageError{"no such file: " + file};
    // What the import would refuse part-way, refused before it starts.
    const qint64 cap = catalogue.limits().setupFileBytes;
    if (chosen.size() > cap)
        throw UsageError{file + " holds " + QString::number(chosen.size()) + " bytes, more than the " +
                         QString::number(cap) + " a setup file may hold ([files] max-setup-size)"};
    const std::optional<std::vector<std::string>> lines = text::fileLines(chosen.absoluteFilePath(), cap);
    if (!lines) throw UsageError{"cannot read " + file};
    if (lines->empty()) throw UsageError{file + " is empty: its first line must be the setup's name"};
    const std::string& name = lines->front();
    QString target;
    try {
        target = setupFilePath(programDir, name);
    } catch (const RuntimeError&) {
        throw UsageError{"the name line of " + file + ", \"" + text::display(name) +
                         "\", cannot be a file name (it holds one of \\ / : * ? \" < > | or a control "
                         "character, or is a name Windows keeps for a device, such as CON, NUL or COM1)"};
    }
    // A file that already lies beside the program under its name is catalogued, not copied.
    const QFileInfo existing(target);
    const bool inPlace = existing.exists() && existing.canonicalFilePath() == chosen.canonicalFilePath();
    importSetupFile(catalogue, programDir, inPlace ? target : chosen.absoluteFilePath());
    out << (inPlace ? "Listed " + target : "Copied " + chosen.absoluteFilePath() + " to " + target) << "\n"
        << "Setup " << catalogue.list().ubound() << ": " << text::display(name) << "\n";
    return 0;
}

int removeSetupCommand(const QStringList& arguments, SetupCatalogue& catalogue, QTextStream& out) {
    const int n = setupNumber(positionalArguments("remove", arguments, {"N"}).front(), catalogue);
    const SetupRecord removed = catalogue.list()[n];
    removeSetup(catalogue, n);
    out << "Removed setup " << n << ": " << text::display(removed.name) << "\n"
        << "Its file stays on disk: " << text::display(removed.filePath) << "\n";
    return 0;
}

} // namespace setup_commands
