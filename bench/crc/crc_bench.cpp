// crc_bench FILE... - the setup wizard's checksum (fileCrc32, with its progress callback doing
// what the wizard does: letting events run) over every file given, timed as a whole.
// crc_bench --plain FILE... reads the same way (1 MiB unbuffered reads) without the checksum.
// Prints one line: bytes=... files=... seconds=... GBps=... digest=...
#include "setups/Checksum.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>

#include <cstdio>
#include <cstring>
#include <vector>

namespace {
std::uint32_t plainRead(const QString& path) {
    static std::vector<char> block(1 << 20);
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) return 0;
    std::uint32_t sum = 0;
    while (file.read(block.data(), static_cast<qint64>(block.size())) > 0)
        sum += static_cast<unsigned char>(block[0]);
    return sum;
}
} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    qint64 bytes = 0;
    std::uint32_t digest = 0;
    QElapsedTimer timer;
    timer.start();
    const bool plain = argc > 1 && std::strcmp(argv[1], "--plain") == 0;
    for (int i = plain ? 2 : 1; i < argc; ++i) {
        const QString path = QString::fromLocal8Bit(argv[i]);
        digest ^= plain ? plainRead(path) : fileCrc32(path, [](std::int64_t) {
                                                QCoreApplication::processEvents();
                                            }) + static_cast<std::uint32_t>(i);
        bytes += QFileInfo(path).size();
    }
    const double seconds = static_cast<double>(timer.nsecsElapsed()) / 1e9;
    std::printf("bytes=%lld files=%d seconds=%.4f GBps=%.3f digest=%08x\n", static_cast<long long>(bytes),
                argc - (plain ? 2 : 1), seconds, static_cast<double>(bytes) / seconds / 1e9, digest);
    return 0;
}
