#pragma once
// The checksum a setup records for each file, and that the squadron's player clients compute
// over their own copy of the file to compare with it:
//
//   the CRC-32 of the whole file (the zlib/gzip CRC: polynomial 0x04C11DB7 reflected, initial
//   value and final xor 0xFFFFFFFF), written as a signed 32-bit decimal number, no padding.
//
// So a file holding "123456789" (CRC 0xCBF43926) reads "-873187034", an empty file "0", and a
// CRC below 0x80000000 reads as its plain value (0x00000FFF reads "4095").
#include <QString>

#include <cstdint>
#include <functional>
#include <string>

// Called every few MiB while a file is read, so a window can stay responsive inside a
// large file; its argument is the number of bytes read so far.
using ChecksumProgress = std::function<void(std::int64_t bytesDone)>;

// The checksum text of the file at localPath (a path of the local file system). Raises
// "File not found" (53) when the file cannot be opened and "Device I/O error" (57) when
// reading it fails.
std::string fileChecksumText(const QString& localPath, const ChecksumProgress& progress = {});

// The CRC-32 itself, and its text form.
std::uint32_t fileCrc32(const QString& localPath, const ChecksumProgress& progress = {});
std::string checksumText(std::uint32_t crc);
