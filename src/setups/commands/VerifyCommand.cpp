// verify: an installation checked, where the command runs, against a setup's lines as the
// catalogue holds them, each failed line explained with the sentence a player would be given.
#include "basics/RuntimeError.h"
#include "basics/Text.h"
#include "setups/FailureSentence.h"
#include "setups/InstallationCheck.h"
#include "setups/commands/SubCommands.h"

#include <QCommandLineParser>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace setup_commands {

int verifySetup(const QStringList& arguments, CatalogueAccess& catalogue, QTextStream& out,
                QTextStream& err) {
    QCommandLineParser parser;
    addInstallationOptions(parser);
    parseOrRefuse(parser, "verify", arguments);
    const QStringList given = parser.positionalArguments();
    if (given.isEmpty()) throw UsageError{"missing N"};
    if (given.size() > 1) throw UsageError{"unexpected argument \"" + given[1] + "\""};
    const CatalogueAnswer answer = catalogue.ask({"lines", given.front()});
    if (answer.status != 0) return passOn(answer, out, err);
    const QJsonObject setup = QJsonDocument::fromJson(answer.out.toUtf8()).object();

    const InstallationCheck installation(chosenInstallation(parser));
    const FalconInstallation& falcon = installation.installation();
    out << "Setup " << setup["number"].toInt() << ": "
        << text::printable(setup["name"].toString().toStdString()) << " (" << setup["file"].toString()
        << ")\n"
        << "Installation: " << shownPath(falcon.baseDir) << " (" << text::display(falcon.flavour)
        << ", theater " << text::display(falcon.theater) << ")\n";

    const QJsonArray lines = setup["lines"].toArray();
    const int count = static_cast<int>(lines.size());
    int failed = 0;
    int unchecked = 0;
    for (int k = 1; k <= count; ++k) {
        const std::string line = lines[k - 1].toString().toLatin1().toStdString();
        const LineVerdict verdict = installation.check(line);
        if (verdict == LineVerdict::NotChecked) {
            ++unchecked;
            out << "line " << k << ": not checked: " << text::printable(line, 4096) << "\n";
        } else if (verdict == LineVerdict::Fails) {
            ++failed;
            std::string sentence;
            try {
                sentence = failureSentence(line);
            } catch (const RuntimeError&) {
                // A line without the field its sentence names: players are given "".
            }
            out << "line " << k << ": "
                << (sentence.empty() ? "\"" + text::printable(line, 4096) + "\" (no sentence for this line)"
                                     : text::printable(sentence, 4096))
                << "\n";
        }
    }
    const int checked = count - unchecked;
    const QString which = unchecked > 0 ? "checked " : "";
    QString summary = failed > 0     ? QString("%1 of %2 failed").arg(failed).arg(lineCount(count))
                      : checked == 0 ? QString("no lines to check")
                      : checked == 1 ? "the 1 " + which + "line matches"
                                     : QString("all %1 %2lines match").arg(checked).arg(which);
    if (unchecked > 0) summary += QString(", %1 not checked").arg(unchecked);
    out << summary << "\n";
    return failed > 0 ? 1 : 0;
}

} // namespace setup_commands
