// verify: this machine's installation checked against a setup's lines as the catalogue holds
// them, each failed line explained with the sentence a player would be given for it.
#include "basics/RuntimeError.h"
#include "basics/Text.h"
#include "setups/FailureSentence.h"
#include "setups/InstallationCheck.h"
#include "setups/SetupCatalogue.h"
#include "setups/commands/SubCommands.h"

namespace setup_commands {

int verifySetup(const QStringList& arguments, SetupCatalogue& catalogue, QTextStream& out) {
    const int n = setupNumber(positionalArguments("verify", arguments, {"N"}).front(), catalogue);
    const InstallationCheck installation = InstallationCheck::ofThisMachine();
    if (!installation.found())
        throw UsageError{"no Falcon 4 installation on this machine (no baseDir in HKEY_LOCAL_MACHINE\\" +
                         QString(kFalconRegistryKey) + ")"};
    const FalconInstallation& falcon = installation.installation();
    const SetupRecord& setup = catalogue.list()[n];
    out << "Setup " << n << ": " << text::display(setup.name) << " (" << text::display(setup.filePath)
        << ")\n"
        << "Installation: " << text::display(falcon.baseDir) << " (" << text::display(falcon.flavour)
        << ", theater " << text::display(falcon.theater) << ")\n";

    const int count = setup.lines.ubound();
    int failed = 0;
    int unchecked = 0;
    for (int k = 1; k <= count; ++k) {
        const std::string& line = setup.lines[k];
        const LineVerdict verdict = installation.check(line);
        if (verdict == LineVerdict::NotChecked) {
            ++unchecked;
            out << "line " << k << ": not checked: " << text::display(line) << "\n";
        } else if (verdict == LineVerdict::Fails) {
            ++failed;
            std::string sentence;
            try {
                sentence = failureSentence(line);
            } catch (const RuntimeError&) {
                // A line without the field its sentence names: players are given "".
            }
            out << "line " << k << ": "
                << (sentence.empty() ? "\"" + text::display(line) + "\" (no sentence for this line)"
                                     : text::display(sentence))
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
