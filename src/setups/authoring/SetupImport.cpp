#include "setups/authoring/SetupImport.h"

#include "basics/CappedRead.h"
#include "basics/OperatorLog.h"
#include "basics/Text.h"
#include "discovery/FalconDiscovery.h"
#include "setups/SetupCatalogue.h"
#include "setups/SetupFile.h"
#include "setups/authoring/ConfigOptions.h"
#include "setups/authoring/SetupFileBuilder.h"

namespace {
constexpr std::string_view kSetupCap = "[files] max-setup-size";

// The file's bytes, which must hold at least a name line.
QByteArray setupBytes(const QString& path, qint64 maxBytes) {
    QByteArray bytes = readCapped(path, maxBytes, kSetupCap);
    if (bytes.isEmpty()) throw RuntimeError(62, "Input past end of file");
    return bytes;
}
} // namespace

void readSetupForEdit(WizardState& state, const QString& localPath, qint64 maxBytes) {
    readInstallationKey(state.falcon);
    chooseConfigFile(state.falcon);
    state.configOptions = readConfigOptions(localFilePath(state.falcon.configFile));
    state.selectedFiles.reset();

    const QByteArray bytes = setupBytes(localPath, maxBytes);
    text::LineCursor lines(bytesView(bytes));
    std::string_view line;
    lines.next(line);
    state.setupName = std::string(line);
    while (lines.next(line)) {
        const std::string record = recordLineOrEmpty(line);
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
    importSetupContent(setups, appDir, setupBytes(chosenPath, setups.limits().setupFileBytes), chosenPath);
}

void importSetupContent(SetupCatalogue& setups, const QString& appDir, const QByteArray& bytes,
                        const QString& chosenPath) {
    const qint64 cap = setups.limits().setupFileBytes;
    if (bytes.size() > cap) throw fileTooLarge(chosenPath, std::to_string(bytes.size()), cap, kSetupCap);
    if (bytes.isEmpty()) throw RuntimeError(62, "Input past end of file");
    text::LineCursor lines(bytesView(bytes));
    std::string_view name;
    lines.next(name);
    const QString target = setupFilePath(appDir, std::string(name));
    if (target != chosenPath) {
        // Every line as read, each ended as the format ends lines, in one piece: the copy is
        // whole or the old file stays.
        std::string copy;
        copy.reserve(static_cast<size_t>(bytes.size()) + 2);
        text::LineCursor all(bytesView(bytes));
        for (std::string_view line; all.next(line);)
            copy.append(line).append("\r\n");
        try {
            writeWholeFile(target, copy);
        } catch (const RuntimeError& e) {
            qCWarning(lcSetups, "import of %s: %s not written: run-time error %d: %s",
                      qUtf8Printable(chosenPath), qUtf8Printable(target), e.number, e.what());
            throw;
        }
    }
    setups.editableList().append().filePath = target.toLatin1().toStdString();
    setups.commit();
}
