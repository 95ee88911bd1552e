#include "app/ProgramDirChoice.h"

#include "app/ProgramDir.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace {

bool isUnderUsr(const QString& dir) {
#ifdef Q_OS_WIN
    Q_UNUSED(dir);
    return false;
#else
    const QString clean = QDir::cleanPath(dir);
    return clean == "/usr" || clean.startsWith("/usr/");
#endif
}

ProgramDirChoice refused(const QString& dir, const char* why) {
    return {{}, QString("The program directory %1 %2.").arg(QDir::toNativeSeparators(dir), why)};
}

} // namespace

ProgramDirChoice chooseProgramDir(const QString& requested, const QString& executableDir, bool make) {
    if (!requested.isEmpty()) {
        const QFileInfo info(requested);
        const QString path = info.absoluteFilePath();
        if (!info.exists()) return refused(path, "does not exist, or this user may not reach it");
        if (!info.isDir()) return refused(path, "is not a directory");
        if (!info.isWritable()) return refused(path, "cannot be written");
        return {programDirWithSeparator(QDir::cleanPath(path)), {}};
    }
    if (QFileInfo(executableDir).isWritable() && !isUnderUsr(executableDir))
        return {programDirWithSeparator(executableDir), {}};
    const QString data = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
    if (data.isEmpty() || (make && !QDir().mkpath(data))) return refused(data, "cannot be made");
    return {programDirWithSeparator(data), {}};
}
