#include "setups/Checksum.h"
#include "server/RuntimeError.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace {

QString writeFile(const QTemporaryDir& dir, const QString& name, const QByteArray& content) {
    QFile f(dir.filePath(name));
    f.open(QIODevice::WriteOnly);
    f.write(content);
    return f.fileName();
}

// The CRC-32 one bit at a time, as the definition has it.
std::uint32_t referenceCrc(const QByteArray& data) {
    std::uint32_t crc = 0xFFFFFFFFu;
    for (unsigned char c : data) {
        crc ^= c;
        for (int k = 0; k < 8; ++k)
            crc = (crc >> 1) ^ (0xEDB88320u & (0u - (crc & 1u)));
    }
    return ~crc;
}

} // namespace

TEST(Checksum, KnownValuesAsSignedDecimal) {
    QTemporaryDir dir;
    EXPECT_EQ(fileChecksumText(writeFile(dir, "check.dat", "123456789")), "-873187034"); // 0xCBF43926
    EXPECT_EQ(fileChecksumText(writeFile(dir, "abc.dat", "abc")), "891568578");          // 0x352441C2
    EXPECT_EQ(fileChecksumText(writeFile(dir, "empty.dat", "")), "0");
    EXPECT_EQ(checksumText(0x00000FFFu), "4095");
    EXPECT_EQ(checksumText(0x80000000u), "-2147483648");
    EXPECT_EQ(checksumText(0xFFFFFFFFu), "-1");
}

TEST(Checksum, LargeFileAcrossBlocksWithProgress) {
    QTemporaryDir dir;
    // 20 MiB and a bit: several read blocks, an odd tail, and progress calls inside the file.
    QByteArray data(20 * 1024 * 1024 + 12345, Qt::Uninitialized);
    std::uint32_t x = 2463534242u;
    for (char& c : data) {
        x ^= x << 13;
        x ^= x >> 17;
        x ^= x << 5;
        c = static_cast<char>(x);
    }
    const QString path = writeFile(dir, "big.dat", data);
    std::vector<std::int64_t> calls;
    EXPECT_EQ(fileCrc32(path, [&](std::int64_t done) { calls.push_back(done); }), referenceCrc(data));
    ASSERT_GE(calls.size(), 2u);
    for (size_t i = 1; i < calls.size(); ++i)
        EXPECT_GT(calls[i], calls[i - 1]);
    EXPECT_LE(calls.back(), data.size());
}

TEST(Checksum, MissingFileIsFileNotFound) {
    QTemporaryDir dir;
    try {
        fileChecksumText(dir.filePath("nothing.dat"));
        FAIL() << "no error";
    } catch (const RuntimeError& e) {
        EXPECT_EQ(e.number, 53);
    }
}
