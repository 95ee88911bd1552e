#include "net/BanFile.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

BanFileReading readBanFile(const QString& path) {
    BanFileReading reading;
    QFile file(path);
    if (!file.exists()) return reading;
    // A pipe or a device in the file's place would block the server or never end.
    if (!QFileInfo(path).isFile()) {
        reading.error = "it is not a regular file";
        return reading;
    }
    if (!file.open(QIODevice::ReadOnly)) {
        reading.error = file.errorString();
        return reading;
    }
    const QByteArray bytes = file.read(kMaxBanFileBytes + 1);
    reading.text = parseBans(bytes.left(kMaxBanFileBytes));
    if (bytes.size() > kMaxBanFileBytes)
        reading.text.problems
            << QString("larger than %1 KiB: the rest is not read").arg(kMaxBanFileBytes / 1024);
    return reading;
}

QString writeBanFile(const QString& path, const QList<Ban>& bans) {
    // A saved file replaces the name it was given; one that is a link would have its target
    // written instead, wherever that is.
    if (QFileInfo(path).isSymLink()) return "it is a symbolic link; the server writes no file through one";
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) return file.errorString();
    const QByteArray text = formatBans(bans);
    if (file.write(text) != text.size()) {
        const QString why = file.errorString();
        file.cancelWriting();
        return why;
    }
    if (!file.commit()) return file.errorString();
    return {};
}
