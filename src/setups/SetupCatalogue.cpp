#include "setups/SetupCatalogue.h"

#include "basics/CappedRead.h"
#include "basics/ErrorTrap.h"
#include "basics/IniFile.h"
#include "basics/OperatorLog.h"
#include "basics/RuntimeError.h"
#include "basics/Text.h"
#include "setups/SetupFile.h"

#include <QFile>
#include <QFileInfo>

#include <optional>

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
    // A tessark.ini that cannot be read whole lists nothing; it is not written over until the
    // list changes.
    IniSnapshot ini;
    trap([&] {
        try {
            ini = IniSnapshot(iniFile_, limits_.iniFileBytes);
        } catch (const RuntimeError& e) {
            qCCritical(lcSetups, "%s cannot be read, so no setups are listed: %s", qUtf8Printable(iniFile_),
                       e.what());
            throw;
        }
    });
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
        std::optional<RuntimeError> failure;
        const bool read = trap([&] {
            try {
                SetupFileLines lines = readSetupFile(path, limits_.setupFileBytes);
                setup.name = lines.name;
                for (std::string& record : lines.records)
                    setup.lines.append(std::move(record));
            } catch (const RuntimeError& e) {
                failure = e;
                throw;
            }
        });
        if (read) {
            ++loaded;
            continue;
        }
        const bool tooLarge = failure && failure->number == kFileTooLarge;
        setup.problem = tooLarge ? "too large" : "cannot be read";
        // The file is there (it was looked for above): one that does not open is one the server's
        // user may not read, whatever the classic error's words.
        const QString why = tooLarge ? text::printable(failure->description(), 400)
                                     : QString("the server's user may not read it");
        qCWarning(lcSetups, "setup %d: %s %s; players are offered it with an empty name (%s)", i,
                  qUtf8Printable(text::printable(setup.filePath, 260)), qUtf8Printable(setup.problem),
                  qUtf8Printable(why));
    }
    qCInfo(lcSetups, "setup catalogue: %d listed in %s, %d loaded", static_cast<int>(setups_.ubound()),
           qUtf8Printable(iniFile_), loaded);
}

void SetupCatalogue::writeList() {
    std::optional<RuntimeError> notWritten;
    {
        ErrorTrap trap(errorLog_, "SaveINI");
        trap([&] { count_ = text::toInt16(setups_.ubound()); });
        // The file is written afresh, and every other setting goes with the old one: the logging
        // switch reads as absent from the first change of the catalogue on. It was deleted first
        // once, which raised "File not found" when there was none; that stays.
        trap([&] {
            if (!QFile::exists(iniFile_)) throw errors::fileNotFound();
        });
        std::vector<IniEntry> entries{{"SETUPLIST", "NUM", std::to_string(count_)}};
        for (int i = 1; i <= count_; ++i)
            trap([&] { entries.push_back({"SETUPLIST" + std::to_string(i), "FNAME", setups_[i].filePath}); });
        trap([&] {
            try {
                replaceIni(entries, iniFile_);
            } catch (const RuntimeError& e) {
                notWritten = e;
                qCCritical(lcSetups, "the setup list was not saved: run-time error %d: %s", e.number,
                           e.what());
                throw;
            }
        });
    }
    if (notWritten) throw *notWritten;
}

void SetupCatalogue::reload() {
    readList();
    loadFiles();
}

void SetupCatalogue::commit() {
    try {
        writeList();
    } catch (const RuntimeError&) {
        reload();
        throw;
    }
    reload();
}

const VbList<std::string>* SetupCatalogue::findLines(long setupNumber) const {
    const SetupRecord* setup = setupNumber >= 1 ? setups_.find(setupNumber) : nullptr;
    return setup ? &setup->lines : nullptr;
}
