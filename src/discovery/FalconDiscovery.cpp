#include "discovery/FalconDiscovery.h"

#include "basics/Text.h"

#include "discovery/Registry.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

namespace {

std::string withoutNuls(std::string text) {
    text.erase(std::remove(text.begin(), text.end(), '\0'), text.end());
    return text;
}

bool fileExists(const std::string& windowsPath) {
    QFileInfo info(localFilePath(windowsPath));
    return info.exists() && !info.isDir();
}

#ifndef Q_OS_WIN
// Windows paths ignore letter case and the installation's registry entries may not match the
// directory names letter for letter: each component is looked up without regard to case.
QString resolveIgnoringCase(QString base, const QStringList& components) {
    for (const QString& part : components) {
        if (part.isEmpty()) continue;
        QString next = base + "/" + part;
        if (!QFileInfo::exists(next)) {
            const QStringList entries = QDir(base).entryList(QDir::AllEntries | QDir::System | QDir::Hidden);
            for (const QString& entry : entries)
                if (entry.compare(part, Qt::CaseInsensitive) == 0) {
                    next = base + "/" + entry;
                    break;
                }
        }
        base = next;
    }
    return base;
}

// Where drive letter `letter` (lower case) is in the prefix.
QString driveRoot(QChar letter) {
    const QString prefix = winePrefixDir();
    if (letter == 'c' && QFileInfo(prefix + "/drive_c").isDir()) return prefix + "/drive_c";
    return prefix + "/dosdevices/" + letter + ":";
}

// Every drive of the prefix with the real directory it stands for.
std::vector<std::pair<QChar, QString>> driveTargets() {
    std::vector<std::pair<QChar, QString>> drives;
    const QString prefix = winePrefixDir();
    const QStringList entries = QDir(prefix + "/dosdevices").entryList(QDir::AllEntries | QDir::System);
    for (const QString& entry : entries) {
        if (entry.size() != 2 || entry[1] != ':' || !entry[0].isLetter()) continue;
        QString target = QFileInfo(prefix + "/dosdevices/" + entry).canonicalFilePath();
        if (!target.isEmpty()) drives.emplace_back(entry[0].toUpper(), target);
    }
    QString driveC = QFileInfo(prefix + "/drive_c").canonicalFilePath();
    if (!driveC.isEmpty()) drives.emplace_back(QChar('C'), driveC);
    return drives;
}
#endif

} // namespace

void readInstallationKey(FalconInstallation& falcon) {
    falcon.baseDir =
        withoutNuls(readRegistryValue(RegistryRoot::LocalMachine, kFalconRegistryKey, "baseDir").asText()) +
        "\\";
    falcon.theater =
        withoutNuls(readRegistryValue(RegistryRoot::LocalMachine, kFalconRegistryKey, "curTheater").asText());
}

void chooseConfigFile(FalconInstallation& falcon) {
    falcon.configFile = falcon.baseDir + "cobra.cfg";
    falcon.flavour = "COB";
    if (fileExists(falcon.configFile)) return;
    falcon.configFile = falcon.baseDir + "FalconBMS.cfg";
    falcon.flavour = "BMS";
    if (fileExists(falcon.configFile)) return;
    falcon.configFile = falcon.baseDir + "FalconSP.cfg";
    falcon.flavour = "FF";
}

QString localFilePath(const std::string& windowsPath) {
    QString path = text::display(windowsPath);
#ifdef Q_OS_WIN
    return QDir::fromNativeSeparators(path);
#else
    path.replace('\\', '/');
    if (path.size() >= 2 && path[1] == ':' && path[0].isLetter()) {
        const QString root = driveRoot(path[0].toLower());
        QString local = resolveIgnoringCase(root, path.mid(2).split('/'));
        if (path.endsWith('/') && !local.endsWith('/')) local += '/';
        return local;
    }
    return path;
#endif
}

std::string windowsFilePath(const QString& localPath) {
#ifdef Q_OS_WIN
    return QDir::toNativeSeparators(localPath).toLatin1().toStdString();
#else
    QFileInfo info(localPath);
    QString path = info.exists() ? info.canonicalFilePath() : info.absoluteFilePath();
    // The drive whose directory holds the path most closely (C: over Z:, which is "/").
    QChar bestLetter;
    QString bestTarget;
    for (const auto& [letter, target] : driveTargets()) {
        const bool inside = path == target || path.startsWith(target.endsWith('/') ? target : target + "/");
        if (inside && target.size() > bestTarget.size()) {
            bestLetter = letter;
            bestTarget = target;
        }
    }
    if (bestLetter.isNull()) return QString(path).replace('/', '\\').toLatin1().toStdString();
    QString rest = path.mid(bestTarget.size());
    if (rest.startsWith('/')) rest.remove(0, 1);
    return (QString(bestLetter) + ":\\" + rest.replace('/', '\\')).toLatin1().toStdString();
#endif
}
