#include "setups/SetupCatalogue.h"

#include "basics/ErrorTrap.h"
#include "basics/IniFile.h"
#include "basics/OperatorLog.h"
#include "basics/RuntimeError.h"
#include "basics/Text.h"
#include "setups/SetupFile.h"

#include <QFile>
#include <QFileInfo>

namespace {
// Setup file paths are stored the way the squadron's Windows tools write them; the file
// system is asked with the platform's own separators.
QString localPath(const std::string& path) {
    QString p = text::display(path);
#ifndef Q_OS_WIN
    p.replace('\\', '/');
#endif
    return p;
}
} // namespace

SetupCatalogue::SetupCatalogue(QString iniFile, ErrorLog& errorLog, StatusDisplay& display)
    : iniFile_(std::move(iniFile)), errorLog_(errorLog), display_(display) {}

void SetupCatalogue::reset() {
    setups_.reset();
}

void SetupCatalogue::readList() {
    ErrorTrap trap(errorLog_, "InitSetups");
    const IniSnapshot ini(iniFile_);
    // A count that does not fit keeps the one from before; a negative one keeps the old list.
    trap([&] { count_ = text::leadingInt16(ini.read("SETUPLIST", "NUM")); });
    trap([&] { setups_ = VbList<SetupRecord>::withUpperBound(count_); });
    for (int i = 1; i <= count_; ++i)
        trap([&] {
            setups_[i].lines.reset();
            setups_[i].filePath = ini.read("SETUPLIST" + std::to_string(i), "FNAME");
        });
}

void SetupCatalogue::loadFiles() {
    ErrorTrap trap(errorLog_, "LoadSetups");
    int loaded = 0;
    for (int i = 1; i <= setups_.ubound(); ++i) {
        SetupRecord& setup = setups_[i];
        QString path = localPath(setup.filePath);
        if (setup.filePath.empty() || !QFileInfo(path).isFile()) {
            setup.problem = "not found";
            qCWarning(lcSetups, "setup %d: %s not found; players are offered it with an empty name", i,
                      qUtf8Printable(text::printable(setup.filePath, 260)));
            display_.messageBox("The File " + text::display(setup.filePath) + " was not found", "Error",
                                MessageIcon::Critical);
            continue;
        }
        const bool read = trap([&] {
            SetupFileLines lines = readSetupFile(path);
            setup.name = lines.name;
            for (std::string& record : lines.records)
                setup.lines.append(std::move(record));
        });
        if (read) {
            ++loaded;
            continue;
        }
        setup.problem = "cannot be read";
        qCWarning(lcSetups, "setup %d: %s cannot be read; players are offered it with an empty name", i,
                  qUtf8Printable(text::printable(setup.filePath, 260)));
    }
    qCInfo(lcSetups, "setup catalogue: %d listed in %s, %d loaded", static_cast<int>(setups_.ubound()),
           qUtf8Printable(iniFile_), loaded);
}

void SetupCatalogue::writeList() {
    ErrorTrap trap(errorLog_, "SaveINI");
    const QString& ini = iniFile_;
    trap([&] { count_ = text::toInt16(setups_.ubound()); });
    // The whole file goes, and every other setting with it: the logging switch reads as
    // absent from the first change of the catalogue on.
    trap([&] {
        if (!QFile::exists(ini)) throw errors::fileNotFound();
        if (!QFile::remove(ini)) throw RuntimeError(75, "Path/File access error");
    });
    std::vector<IniEntry> entries{{"SETUPLIST", "NUM", std::to_string(count_)}};
    for (int i = 1; i <= count_; ++i)
        trap([&] { entries.push_back({"SETUPLIST" + std::to_string(i), "FNAME", setups_[i].filePath}); });
    writeIniAll(entries, ini);
}

void SetupCatalogue::reload() {
    readList();
    loadFiles();
}

void SetupCatalogue::commit() {
    writeList();
    reload();
}

const VbList<std::string>* SetupCatalogue::findLines(long setupNumber) const {
    const SetupRecord* setup = setupNumber >= 1 ? setups_.find(setupNumber) : nullptr;
    return setup ? &setup->lines : nullptr;
}
