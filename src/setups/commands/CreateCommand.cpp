// create: the setup wizard's pages filled from the command line, then the wizard's last step.
#include "basics/Text.h"
#include "discovery/FalconDiscovery.h"
#include "setups/SetupCatalogue.h"
#include "setups/authoring/ConfigOptions.h"
#include "setups/authoring/FileSelection.h"
#include "setups/authoring/SetupFileBuilder.h"
#include "setups/commands/SubCommands.h"

#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>

namespace setup_commands {
namespace {

std::string latin1(const QString& s) {
    return s.toLatin1().toStdString();
}

// "C:\..." or "C:/...": a path in the installation's Windows form, on any platform.
bool isDrivePath(const QString& path) {
    return path.size() >= 3 && path[0].isLetter() && path[1] == ':' && (path[2] == '\\' || path[2] == '/');
}

// A --file as the wizard's "Browse" takes a file: the local file, handed over as the file
// dialog would hand it, then cut to its path inside the installation by the same rule.
std::string fileInsideInstallation(const QString& given, const std::string& baseDir) {
    QString local;
    if (QDir::isAbsolutePath(given))
        local = given;
    else if (isDrivePath(given))
        local = localFilePath(latin1(given));
    else
        local = localFilePath(baseDir + latin1(QString(given).replace('/', '\\')));
    const QFileInfo info(local);
    if (!info.isFile()) throw UsageError{"--file " + given + ": no such file"};
    if (!info.isReadable()) throw UsageError{"--file " + given + ": cannot be read"};
    // Cleaned, so that a ".." cannot lead out of the installation while the text still begins
    // with its directory (Windows paths are compared as text).
    const QString chosen = QDir::cleanPath(info.absoluteFilePath());
    const BrowseResult result = filesInsideInstallation(dialogFileNameText({chosen}), baseDir);
    if (result.outsideInstallation)
        throw UsageError{"--file " + given +
                         ": Your selection must be inside current Falcon 4 installation (" +
                         shownPath(baseDir) + ")"};
    return result.relativePaths.front();
}

// The configuration entries, each --config ticking the first entry of its name, as editing a
// setup ticks them.
void tickEntries(WizardState& state, const QStringList& entries) {
    const QString configFile = shownPath(state.falcon.configFile);
    try {
        state.configOptions = readConfigOptions(localFilePath(state.falcon.configFile));
    } catch (const RuntimeError&) {
        // The wizard cannot go past its entry page without the file; a setup without
        // configuration entries does not need it.
        if (!entries.isEmpty())
            throw UsageError{"--config " + entries.front() + ": the configuration file " + configFile +
                             " cannot be read"};
        return;
    }
    for (const QString& entry : entries) {
        bool found = false;
        for (int j = 1; j <= state.configOptions.ubound() && !found; ++j)
            if (text::display(state.configOptions[j].name) == entry)
                state.configOptions[j].checked = found = true;
        if (!found)
            throw UsageError{"--config " + entry + ": no \"set " + entry + "\" line in " + configFile};
    }
}

} // namespace

int createSetup(const QStringList& arguments, CatalogueAccess& catalogue, QTextStream& out, QTextStream& err,
                const ChecksumProgressReport& progress) {
    QCommandLineParser parser;
    parser.addOption({"name", "The setup's name, its first line and its file name.", "NAME"});
    parser.addOption({"file", "A file of the installation to check.", "PATH"});
    parser.addOption({"no-sim-folder", "Do not allow a \"Sim\" folder to exist."});
    parser.addOption({"config", "A configuration entry to check.", "ENTRY"});
    addInstallationOptions(parser);
    parseOrRefuse(parser, "create", arguments);
    if (!parser.positionalArguments().isEmpty())
        throw UsageError{"unexpected argument \"" + parser.positionalArguments().front() + "\""};
    const QStringList names = parser.values("name");
    if (names.isEmpty()) throw UsageError{"missing --name NAME"};
    if (names.size() > 1) throw UsageError{"--name given more than once"};
    if (names.front().isEmpty()) throw UsageError{"--name is empty"};

    WizardState state;
    state.setupName = latin1(names.front());
    // A name the setup file cannot hold (beyond single-byte text) is no name for it.
    if (text::display(state.setupName) != names.front())
        throw UsageError{"--name " + names.front() + ": holds characters a setup file cannot hold"};
    try {
        setupFilePath({}, state.setupName);
    } catch (const RuntimeError&) {
        throw UsageError{
            "--name " + names.front() +
            ": cannot be a file name (it holds one of \\ / : * ? \" < > | or a control character, "
            "or is a name Windows keeps for a device, such as CON, NUL or COM1)"};
    }
    state.falcon = chosenInstallation(parser);
    for (const QString& file : parser.values("file"))
        state.selectedFiles.append(fileInsideInstallation(file, state.falcon.baseDir));
    state.forbidSimFolder = parser.isSet("no-sim-folder");
    tickEntries(state, parser.values("config"));

    // The checksums are taken here, where the installation is; the catalogue gets the result.
    BuildProgress building;
    if (progress)
        building.during = [&](const std::string& file, std::int64_t bytes) {
            progress(text::display(file), bytes,
                     QFileInfo(localFilePath(state.falcon.baseDir + file)).size());
        };
    QByteArray content;
    for (const std::string& line : buildSetupLines(state, building))
        content.append(line.data(), static_cast<qsizetype>(line.size())).append("\r\n");
    return passOn(catalogue.ask({"store-built", names.front()}, content), out, err);
}

} // namespace setup_commands
