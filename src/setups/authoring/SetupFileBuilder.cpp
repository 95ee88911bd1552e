#include "setups/authoring/SetupFileBuilder.h"

#include "basics/OperatorLog.h"
#include "basics/Text.h"
#include "discovery/InstalledFile.h"

#include "setups/Checksum.h"
#include "setups/SetupCatalogue.h"
#include "setups/SetupFile.h"

namespace {
// Windows opens the device, not a file, for these names with any extension ("NUL.stp",
// "com1.old.stp"), whatever the case, with blanks before the extension too. The digits include
// the superscripts one, two and three of the Latin-1 code page.
bool isWindowsDeviceName(std::string_view name) {
    std::string base = text::upper(std::string(name.substr(0, name.find('.'))));
    base.erase(base.find_last_not_of(' ') + 1);
    for (const char* device : {"CON", "PRN", "AUX", "NUL", "CONIN$", "CONOUT$", "CLOCK$"})
        if (base == device) return true;
    if (base.size() != 4 || (base.rfind("COM", 0) != 0 && base.rfind("LPT", 0) != 0)) return false;
    const unsigned char digit = static_cast<unsigned char>(base[3]);
    return (digit >= '0' && digit <= '9') || digit == 0xB9 || digit == 0xB2 || digit == 0xB3;
}
} // namespace

QString setupFilePath(const QString& appDir, const std::string& setupName) {
    for (unsigned char c : setupName)
        if (c < 32 || std::string_view("\\/:*?\"<>|").find(static_cast<char>(c)) != std::string_view::npos)
            throw RuntimeError(52, "Bad file name or number");
    if (isWindowsDeviceName(setupName)) throw RuntimeError(52, "Bad file name or number");
    return appDir + text::display(setupName) + ".stp";
}

namespace {

// Each line of the setup, in order, as soon as it is known (a checksum takes its time).
template <typename Sink>
void buildLines(const WizardState& state, const BuildProgress& progress, Sink&& line) {
    const int files = state.selectedFiles.ubound();
    const int options = state.configOptions.ubound();
    const int total = files + options + 4;
    int done = 0;
    auto step = [&] {
        ++done;
        if (progress.step) progress.step(done, total);
    };

    line(state.setupName);
    step();
    line("CURSET@" + state.falcon.flavour);
    step();
    if (state.forbidSimFolder) line("CHKSIM");
    step();
    line("CURTHE@" + state.falcon.theater);
    step();
    for (int k = 1; k <= files; ++k) {
        const std::string& file = state.selectedFiles[k];
        // A path read from an edited setup may lead anywhere; out of the installation it is no
        // file of it.
        const QString local = installedFilePath(state.falcon.baseDir, file);
        if (local.isEmpty()) throw errors::fileNotFound();
        const std::string checksum = fileChecksumText(local, [&](std::int64_t bytes) {
            if (progress.during) progress.during(file, bytes);
        });
        line("CHKSUM@" + file + "@" + checksum);
        step();
    }
    for (int j = 1; j <= options; ++j) {
        const ConfigOption& option = state.configOptions[j];
        if (option.checked) line("CONFIG@" + option.name + "@" + option.value);
        step();
    }
}

// Told here too: the window's error box or the command's answer may reach nobody who keeps it.
template <typename Write> void toldIfNotWritten(const QString& path, Write&& write) {
    try {
        write();
    } catch (const RuntimeError& e) {
        qCWarning(lcSetups, "setup file %s not written: run-time error %d: %s", qUtf8Printable(path),
                  e.number, e.what());
        throw;
    }
}

} // namespace

void writeSetupFile(const WizardState& state, const QString& path, const BuildProgress& progress) {
    toldIfNotWritten(path, [&] {
        SetupFileWriter out(path);
        buildLines(state, progress, [&](const std::string& text) { out.line(text); });
        out.close();
    });
}

std::vector<std::string> buildSetupLines(const WizardState& state, const BuildProgress& progress) {
    std::vector<std::string> lines;
    buildLines(state, progress, [&](const std::string& text) { lines.push_back(text); });
    return lines;
}

void storeBuiltSetup(SetupCatalogue& setups, const std::string& setupName, const QString& path,
                     const std::vector<std::string>& lines) {
    toldIfNotWritten(path, [&] {
        SetupFileWriter out(path);
        for (const std::string& text : lines)
            out.line(text);
        out.close();
    });
    catalogueBuiltSetup(setups, setupName, path);
}

void catalogueBuiltSetup(SetupCatalogue& setups, const std::string& setupName, const QString& path) {
    const auto& list = setups.list();
    bool known = false;
    for (int i = 1; i <= list.ubound(); ++i)
        known = known || list[i].name == setupName;
    if (known) {
        setups.reload();
        return;
    }
    setups.editableList().append().filePath = path.toLatin1().toStdString();
    setups.commit();
}
