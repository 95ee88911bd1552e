#include "setups/Checksum.h"
#include "basics/RuntimeError.h"
#include "support/Files.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace {

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

TEST(Checksum, KnownValuesAsSignedDecimalAndAMissingFile) {
    QTemporaryDir dir;
    EXPECT_EQ(fileChecksumText(writeFile(dir.filePath("check.dat"), "123456789")),
              "-873187034");                                                             // 0xCBF43926
    EXPECT_EQ(fileChecksumText(writeFile(dir.filePath("abc.dat"), "abc")), "891568578"); // 0x352441C2
    EXPECT_EQ(fileChecksumText(writeFile(dir.filePath("empty.dat"), "")), "0");
    EXPECT_EQ(checksumText(0x80000000u), "-2147483648");
    EXPECT_THROW(fileChecksumText(dir.filePath("nothing.dat")), RuntimeError);
}

TEST(Checksum, LargeFileAcrossBlocksWithProgress) {
    QTemporaryDir dir;
    // 20 MiB and a bit: several read blocks, an odd tail, and progress calls inside the file.
    QByteArray data(20 * 1024 * 1024 + 12345, Qt::Uninitialized);
    for (qsizetype i = 0; i < data.size(); ++i)
        data[i] = static_cast<char>((i * 7919) >> 3);
    std::vector<std::int64_t> calls;
    const auto whole = fileCrc32(writeFile(dir.filePath("big.dat"), data),
                                 [&](std::int64_t done) { calls.push_back(done); });
    EXPECT_EQ(whole, referenceCrc(data));
    ASSERT_GE(calls.size(), 2u);
    for (size_t i = 1; i < calls.size(); ++i)
        EXPECT_GT(calls[i], calls[i - 1]);
    EXPECT_LE(calls.back(), data.size());
}
