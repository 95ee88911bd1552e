#include "basics/ErrorLog.h"

#include "basics/RuntimeError.h"
#include "basics/Timestamp.h"

#include <QFile>

void ErrorLog::write(const std::string& message) {
    QFile file(path_);
    if (!file.open(QIODevice::Append)) {
        if (unwritable_) unwritable_(RuntimeError(75, "Path/File access error"));
        if (endProgram_) endProgram_();
        return;
    }
    std::string line = logTimestamp() + " -/- Error at " + message + "\r\n";
    file.write(line.data(), static_cast<qint64>(line.size()));
    file.close();
    if (endProgram_) endProgram_();
}
