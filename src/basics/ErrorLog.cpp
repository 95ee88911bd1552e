#include "basics/ErrorLog.h"

#include "basics/OperatorLog.h"
#include "basics/RuntimeError.h"
#include "basics/Timestamp.h"

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <cstring>

#ifndef Q_OS_WIN
#include <unistd.h>
#endif

void ErrorLog::trapped(std::string_view routine, const RuntimeError& error, std::string_view suffix) {
    auto counted = std::find_if(counts_.begin(), counts_.end(),
                                [&](const auto& entry) { return entry.first == routine.data(); });
    if (counted == counts_.end())
        counts_.emplace_back(routine.data(), 1);
    else
        ++counted->second;
    const std::string message = "TskSrvForm1::" + std::string(routine) +
                                " - Error: " + std::to_string(error.number) + " - " + error.description() +
                                std::string(suffix);
    if (!enabled_) {
        qCDebug(lcTrap, "skipped: %s", message.c_str());
        return;
    }
    write(message);
}

void ErrorLog::write(const std::string& message) {
    qCCritical(lcRun, "run-time error at %s; logging is on (LOG=1), so the server ends here (%s)",
               message.c_str(), qUtf8Printable(path_));
    QFile file(path_);
    if (!file.open(QIODevice::Append)) {
        qCCritical(lcRun, "the error log %s cannot be written: %s", qUtf8Printable(path_),
                   qUtf8Printable(file.errorString()));
        if (unwritable_) unwritable_(RuntimeError(75, "Path/File access error"));
        if (endProgram_) endProgram_();
        return;
    }
    std::string line = logTimestamp() + " -/- Error at " + message + "\r\n";
    bool written =
        file.write(line.data(), static_cast<qint64>(line.size())) == static_cast<qint64>(line.size()) &&
        file.flush();
#ifndef Q_OS_WIN
    // The program ends next: a line the system took but cannot put on the disk (a full disk
    // under delayed allocation, a network file system) is known only here.
    written = written && ::fsync(file.handle()) == 0;
#endif
    const QString reason = file.error() != QFileDevice::NoError
                               ? file.errorString()
                               : QString::fromLocal8Bit(std::strerror(errno));
    file.close();
    written = written && file.error() == QFileDevice::NoError;
    if (!written)
        qCCritical(lcRun, "the error log %s could not take the line (%s); the error was: %s",
                   qUtf8Printable(path_), qUtf8Printable(reason), message.c_str());
    if (endProgram_) endProgram_();
}

std::vector<std::pair<std::string, qint64>> ErrorLog::countsByRoutine() const {
    std::vector<std::pair<std::string, qint64>> merged;
    for (const auto& [name, count] : counts_) {
        // A copy for the lambda: the clang the fuzz targets build with captures no structured binding.
        const std::string_view routine = name;
        auto found = std::find_if(merged.begin(), merged.end(),
                                  [&](const auto& entry) { return entry.first == routine; });
        if (found == merged.end())
            merged.emplace_back(routine, count);
        else
            found->second += count;
    }
    return merged;
}
