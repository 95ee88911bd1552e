#include "app/ProgramDir.h"

#include <QDir>

QString programDirWithSeparator(const QString& directory) {
    QString dir = QDir::toNativeSeparators(directory);
    if (dir.endsWith(QDir::separator())) return dir; // a root: "C:\" or "/"
    return dir + QDir::separator();
}
