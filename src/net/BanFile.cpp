#include "net/BanFile.h"

#include "basics/CappedRead.h"
#include "basics/RuntimeError.h"
#include "basics/WholeFile.h"

#include <QFile>
#include <QFileInfo>

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
    try {
        writeWholeFile(path, bytesView(formatBans(bans)));
    } catch (const RuntimeError& e) {
        return QString::fromStdString(e.description());
    }
    return {};
}
