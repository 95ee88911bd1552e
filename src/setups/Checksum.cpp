#include "setups/Checksum.h"

#include "basics/RuntimeError.h"

#include <QFile>

#include <isa-l/crc.h>

#include <memory>

namespace {
// 1 MiB reads stay in the L2 cache between the copy out of the page cache and the CRC, which
// keeps the checksum close to the speed of plain reading; the window is given its events
// every 8 MiB (a few milliseconds of work).
constexpr qint64 kBlockBytes = qint64(1) << 20;
constexpr qint64 kProgressEveryBytes = qint64(8) << 20;
} // namespace

std::uint32_t fileCrc32(const QString& localPath, const ChecksumProgress& progress) {
    QFile file(localPath);
    // Unbuffered: the blocks go straight from the kernel into our buffer, no second copy.
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) throw errors::fileNotFound();
    auto block = std::make_unique<unsigned char[]>(kBlockBytes);
    std::uint32_t crc = 0;
    qint64 done = 0;
    qint64 nextProgress = kProgressEveryBytes;
    for (;;) {
        const qint64 n = file.read(reinterpret_cast<char*>(block.get()), kBlockBytes);
        if (n < 0) throw RuntimeError(57, "Device I/O error");
        if (n == 0) break;
        crc = crc32_gzip_refl(crc, block.get(), static_cast<std::uint64_t>(n));
        done += n;
        if (progress && done >= nextProgress) {
            progress(done);
            nextProgress = done + kProgressEveryBytes;
        }
    }
    return crc;
}

std::string checksumText(std::uint32_t crc) {
    return std::to_string(static_cast<std::int32_t>(crc));
}

std::string fileChecksumText(const QString& localPath, const ChecksumProgress& progress) {
    return checksumText(fileCrc32(localPath, progress));
}
