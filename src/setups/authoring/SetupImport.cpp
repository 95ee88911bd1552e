#include "setups/authoring/SetupImport.h"

#include "discovery/FalconDiscovery.h"
#include "setups/SetupCatalogue.h"
#include "setups/SetupFile.h"
#include "setups/authoring/ConfigOptions.h"
#include "setups/authoring/SetupFileBuilder.h"

namespace {
std::vector<std::string> linesWithName(const QString& path) {
    std::vector<std::string> lines = readRawLines(path);
    if (lines.empty()) throw RuntimeError(62, "Input past end of file");
    return lines;
}
} // namespace

void readSetupForEdit(WizardState& state, const QString& localPath) {
    readInstallationKey(state.falcon);
    chooseConfigFile(state.falcon);
    state.configOptions = readConfigOptions(localFilePath(state.falcon.configFile));
    state.selectedFiles.reset();

    const std::vector<std::string> lines = linesWithName(localPath);
    state.setupName = lines.front();
    for (size_t i = 1; i < lines.size(); ++i) {
        const std::string record = recordLineOrEmpty(lines[i]);
        if (record.empty()) continue;
        const SetupRecordFields fields = interpretRecordLine(record);
        if (fields.kind == "CHKSIM") {
            state.forbidSimFolder = true;
        } else if (fields.kind == "CHKSUM") {
            state.selectedFiles.append(fields.value(1));
        } else if (fields.kind == "CONFIG") {
            const std::string name = fields.value(1);
            for (int j = 1; j <= state.configOptions.ubound(); ++j)
                if (state.configOptions[j].name == name) {
                    state.configOptions[j].checked = true;
                    break;
                }
        }
    }
}

void importSetupFile(SetupCatalogue& setups, const QString& appDir, const QString& chosenPath) {
    const std::vector<std::string> lines = linesWithName(chosenPath);
    importSetupLines(setups, appDir, lines, setupFilePath(appDir, lines.front()) == chosenPath);
}

void importSetupLines(SetupCatalogue& setups, const QString& appDir, const std::vector<std::string>& lines,
                      bool inPlace) {
    if (lines.empty()) throw RuntimeError(62, "Input past end of file");
    const QString target = setupFilePath(appDir, lines.front());
    if (!inPlace) {
        SetupFileWriter out(target);
        for (const std::string& line : lines)
            out.line(line);
        out.close();
    }
    setups.editableList().append().filePath = target.toLatin1().toStdString();
    setups.commit();
}
