// import: the operator's file, read here (a relative name is the operator's, from where the
// command was typed), and its bytes handed to the catalogue, which copies them under the name
// line as the wizard's import does.
#include "basics/CappedRead.h"
#include "basics/Text.h"
#include "setups/commands/SubCommands.h"

#include <QFile>
#include <QFileInfo>

namespace setup_commands {

int importSetup(const QStringList& arguments, CatalogueAccess& catalogue, QTextStream& out,
                QTextStream& err) {
    const QString file = positionalArguments("import", arguments, {"FILE"}).front();
    const QFileInfo chosen(file);
    if (!chosen.isFile()) throw UsageError{"no such file: " + file};
    const qint64 limit = catalogue.maxSetupBytes();
    if (chosen.size() > limit)
        throw UsageError{file + " holds " + QString::number(chosen.size()) + " bytes, more than the " +
                         QString::number(limit) + " a setup file may hold ([files] max-setup-size)"};
    QFile in(chosen.absoluteFilePath());
    if (!in.open(QIODevice::ReadOnly)) throw UsageError{"cannot read " + file};
    const QByteArray content = in.read(limit + 1);
    if (content.size() > limit) throw UsageError{file + " grew past the size of any setup while it was read"};
    std::string_view name;
    if (!text::LineCursor(bytesView(content)).next(name))
        throw UsageError{file + " is empty: its first line must be the setup's name"};
    // What the import would refuse part-way, refused before anything is sent.
    const QString target = targetOf(catalogue.programDir(), std::string(name), file);
    // A file that already lies beside the program under its name is catalogued, not copied.
    const QFileInfo existing(target);
    const bool inPlace = existing.exists() && existing.canonicalFilePath() == chosen.canonicalFilePath();
    QStringList request{"store-import", chosen.absoluteFilePath()};
    if (inPlace) request << "--in-place";
    return passOn(catalogue.ask(request, content), out, err);
}

} // namespace setup_commands
