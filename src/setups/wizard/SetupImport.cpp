#include "setups/wizard/SetupImport.h"

#include "server/FalconDiscovery.h"
#include "setups/SetupCatalogue.h"
#include "setups/SetupFile.h"
#include "setups/wizard/ConfigOptions.h"
#include "setups/wizard/SetupFileBuilder.h"

namespace {
std::vector<std::string> linesWithName(const QString& path) {
    std::vector<std::string> lines = readRawLines(path);
    if (lines.empty()) throw RuntimeError(62, "Input past end of file");
    return lines;
}
} // namespace

void readSetupForEdit(WizardState& state, const QString& localPath) {
    GetFalconRegistry(state.falcon);
    GetFalconConfig(state.falcon);
    state.ConfigOptions = readConfigOptions(localFilePath(state.falcon.FalconCfgFile));
    state.SelectedFiles.reset();

    const std::vector<std::string> lines = linesWithName(localPath);
    state.SetupName = lines.front();
    for (size_t i = 1; i < lines.size(); ++i) {
        const std::string record = recordLineOrEmpty(lines[i]);
        if (record.empty()) continue;
        const SetupRecordFields fields = interpretRecordLine(record);
        if (fields.kind == "CHKSIM") {
            state.CheckSimFlag = true;
        } else if (fields.kind == "CHKSUM") {
            state.SelectedFiles.append(fields.value(1));
        } else if (fields.kind == "CONFIG") {
            const std::string name = fields.value(1);
            for (int j = 1; j <= state.ConfigOptions.ubound(); ++j)
                if (state.ConfigOptions[j].Name == name) {
                    state.ConfigOptions[j].Checked = true;
                    break;
                }
        }
    }
}

void importSetupFile(SetupCatalogue& setups, const QString& appDir, const QString& chosenPath) {
    const std::vector<std::string> lines = linesWithName(chosenPath);
    const QString target = setupFilePath(appDir, lines.front());
    if (target != chosenPath) {
        SetupFileWriter out(target);
        for (const std::string& line : lines)
            out.line(line);
        out.close();
    }
    setups.editableSetups().append().FilePath = target.toLatin1().toStdString();
    setups.commit();
}
