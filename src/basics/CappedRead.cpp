#include "basics/CappedRead.h"

#include "basics/RuntimeError.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>

RuntimeError fileTooLarge(const QString& what, const std::string& size, qint64 maxBytes,
                          std::string_view setting) {
    return {kFileTooLarge, "Out of memory: " + QDir::toNativeSeparators(what).toStdString() + " holds " +
                               size + " bytes, more than the " + std::to_string(maxBytes) + " that " +
                               std::string(setting) + " allows; it was not read"};
}

namespace {
[[noreturn]] void tooLarge(const QString& path, const std::string& size, qint64 maxBytes,
                           std::string_view setting) {
    throw fileTooLarge(path, size, maxBytes, setting);
}
} // namespace

QByteArray readCapped(const QString& path, qint64 maxBytes, std::string_view setting) {
    const QFileInfo info(path);
    if (!info.isFile()) throw errors::fileNotFound();
    if (info.size() > maxBytes) tooLarge(path, std::to_string(info.size()), maxBytes, setting);
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) throw errors::fileNotFound();
    // The size as the system gave it, and then on in small pieces while there is more (a file
    // that grew since, or one whose size the system does not know in advance) until one byte
    // beyond the cap tells that it is too large.
    QByteArray bytes;
    qint64 want = std::min(info.size(), maxBytes) + 1;
    for (;;) {
        const QByteArray piece = file.read(want);
        if (file.error() != QFileDevice::NoError) throw RuntimeError(57, "Device I/O error");
        bytes += piece;
        if (bytes.size() > maxBytes)
            tooLarge(path, "more than " + std::to_string(maxBytes), maxBytes, setting);
        if (piece.size() < want) return bytes;
        want = std::min<qint64>(64 * 1024, maxBytes + 1 - bytes.size());
    }
}
