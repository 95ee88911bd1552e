#include "setups/SetupCatalogue.h"

#include "net/Text.h"
#include "server/ErrorTrap.h"
#include "server/IniFile.h"
#include "server/RuntimeError.h"
#include "server/Server.h"
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

SetupCatalogue::SetupCatalogue(Server& server) : server_(server) {}

void SetupCatalogue::reset() {
    Setups_.reset();
}

void SetupCatalogue::InitSetups() {
    ErrorTrap trap(server_.errorLog(), "InitSetups");
    const IniSnapshot ini(server_.iniFile());
    // A count that does not fit keeps the one from before; a negative one keeps the old list.
    trap([&] { SetupCount_ = text::leadingInt16(ini.read("SETUPLIST", "NUM")); });
    trap([&] { Setups_ = VbList<SetupRecord>::withUpperBound(SetupCount_); });
    for (int i = 1; i <= SetupCount_; ++i)
        trap([&] {
            Setups_[i].Lines.reset();
            Setups_[i].FilePath = ini.read("SETUPLIST" + std::to_string(i), "FNAME");
        });
}

void SetupCatalogue::LoadSetups() {
    ErrorTrap trap(server_.errorLog(), "LoadSetups");
    for (int i = 1; i <= Setups_.ubound(); ++i) {
        SetupRecord& setup = Setups_[i];
        QString path = localPath(setup.FilePath);
        if (setup.FilePath.empty() || !QFileInfo(path).isFile()) {
            server_.display().messageBox("The File " + text::display(setup.FilePath) + " was not found",
                                         "Error", MessageIcon::Critical);
            continue;
        }
        trap([&] {
            SetupFileLines lines = readSetupFile(path);
            setup.Name = lines.name;
            for (std::string& record : lines.records)
                setup.Lines.append(std::move(record));
        });
    }
}

void SetupCatalogue::SaveINI() {
    ErrorTrap trap(server_.errorLog(), "SaveINI");
    const QString& ini = server_.iniFile();
    trap([&] { SetupCount_ = text::toInt16(Setups_.ubound()); });
    // The whole file goes, and every other setting with it: the logging switch reads as
    // absent from the first change of the catalogue on.
    trap([&] {
        if (!QFile::exists(ini)) throw errors::fileNotFound();
        if (!QFile::remove(ini)) throw RuntimeError(75, "Path/File access error");
    });
    std::vector<IniEntry> entries{{"SETUPLIST", "NUM", std::to_string(SetupCount_)}};
    for (int i = 1; i <= SetupCount_; ++i)
        trap([&] { entries.push_back({"SETUPLIST" + std::to_string(i), "FNAME", Setups_[i].FilePath}); });
    WriteINIAll(entries, ini);
}

void SetupCatalogue::commit() {
    SaveINI();
    InitSetups();
    LoadSetups();
}

const VbList<std::string>* SetupCatalogue::findLines(long setupNumber) const {
    const SetupRecord* setup = setupNumber >= 1 ? Setups_.find(setupNumber) : nullptr;
    return setup ? &setup->Lines : nullptr;
}

const VbList<std::string>& SetupCatalogue::linesOf(long setupNumber) const {
    const VbList<std::string>* lines = findLines(setupNumber);
    if (!lines) throw errors::subscriptOutOfRange();
    return *lines;
}
