#include "discovery/InstalledFile.h"

#include "discovery/FalconDiscovery.h"

#include <QFileInfo>

QString installedFilePath(const std::string& baseDir, const std::string& relative) {
    const QString base = QFileInfo(localFilePath(baseDir)).canonicalFilePath();
    if (base.isEmpty()) return {};
    // The resolved path is what gets read, so a link is followed once, here, and not again.
    const QString resolved = QFileInfo(localFilePath(baseDir + relative)).canonicalFilePath();
    if (resolved.isEmpty() || !QFileInfo(resolved).isFile()) return {};
#ifdef Q_OS_WIN
    constexpr Qt::CaseSensitivity kCase = Qt::CaseInsensitive;
#else
    constexpr Qt::CaseSensitivity kCase = Qt::CaseSensitive;
#endif
    const QString inside = base.endsWith('/') ? base : base + '/';
    return resolved.startsWith(inside, kCase) ? resolved : QString();
}
