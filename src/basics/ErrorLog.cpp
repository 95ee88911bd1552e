#include "basics/ErrorLog.h"

#include "basics/OperatorLog.h"
#include "basics/RuntimeError.h"
#include "basics/Timestamp.h"

#include <QFile>

#include <algorithm>

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
    const bool written =
        file.write(line.data(), static_cast<qint64>(line.size())) == static_cast<qint64>(line.size()) &&
        file.flush();
    if (!written)
        qCCritical(lcRun, "the error log %s could not take the line: %s", qUtf8Printable(path_),
                   qUtf8Printable(file.errorString()));
    file.close();
    if (endProgram_) endProgram_();
}

std::vector<std::pair<std::string, qint64>> ErrorLog::countsByRoutine() const {
    std::vector<std::pair<std::string, qint64>> merged;
    for (const auto& [routine, count] : counts_) {
        auto found = std::find_if(merged.begin(), merged.end(),
                                  [&](const auto& entry) { return entry.first == routine; });
        if (found == merged.end())
            merged.emplace_back(routine, count);
        else
            found->second += count;
    }
    return merged;
}
