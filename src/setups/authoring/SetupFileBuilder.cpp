#include "setups/authoring/SetupFileBuilder.h"

#include "basics/Text.h"

#include "setups/Checksum.h"
#include "setups/SetupCatalogue.h"
#include "setups/SetupFile.h"

QString setupFilePath(const QString& appDir, const std::string& setupName) {
    for (unsigned char c : setupName)
        if (c < 32 || std::string_view("\\/:*?\"<>|").find(static_cast<char>(c)) != std::string_view::npos)
            throw RuntimeError(52, "Bad file name or number");
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
        const std::string checksum =
            fileChecksumText(localFilePath(state.falcon.baseDir + file), [&](std::int64_t bytes) {
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

void writeLines(const QString& path, const std::vector<std::string>& lines) {
    SetupFileWriter out(path);
    for (const std::string& text : lines)
        out.line(text);
    out.close();
}

} // namespace

void writeSetupFile(const WizardState& state, const QString& path, const BuildProgress& progress) {
    SetupFileWriter out(path);
    buildLines(state, progress, [&](const std::string& text) { out.line(text); });
    out.close();
}

std::vector<std::string> buildSetupLines(const WizardState& state, const BuildProgress& progress) {
    std::vector<std::string> lines;
    buildLines(state, progress, [&](const std::string& text) { lines.push_back(text); });
    return lines;
}

void storeBuiltSetup(SetupCatalogue& setups, const std::string& setupName, const QString& path,
                     const std::vector<std::string>& lines) {
    writeLines(path, lines);
    catalogueBuiltSetup(setups, setupName, path);
}

void catalogueBuiltSetup(SetupCatalogue& setups, const std::string& setupName, const QString& path) {
    const auto& list = setups.list();
    bool known = false;
    for (int i = 1; i <= list.ubound(); ++i)
        known = known || list[i].name == setupName;
    if (!known) {
        setups.editableList().append().filePath = path.toLatin1().toStdString();
        setups.writeList();
    }
    setups.reload();
}
