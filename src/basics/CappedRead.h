#pragma once
// Files read whole, but never beyond a cap: a file larger than any real one of its kind (a
// setup, tessark.ini) is refused before it is read, so a mistake or a planted file cannot make
// the server hold gigabytes. Only regular files are read: a device, a pipe or a directory in
// a file's place reads as missing, never as an endless or blocking stream.
#include <QByteArray>
#include <QString>

#include <string>
#include <string_view>

struct RuntimeError;

// The number of the run-time error that a file beyond its cap raises.
inline constexpr int kFileTooLarge = 7;

// The whole file. Raises "File not found" (53) when it is no regular file or cannot be opened,
// kFileTooLarge ("Out of memory", with the sizes and the setting named) when it holds more than
// maxBytes, "Device I/O error" (57) when reading fails. `setting` names where the cap is set,
// for the message ("[files] max-setup-size").
QByteArray readCapped(const QString& path, qint64 maxBytes, std::string_view setting);

// The error readCapped raises for `what` (a path, or where the bytes came from) of `size` bytes
// ("more than N" when the size is not known).
RuntimeError fileTooLarge(const QString& what, const std::string& size, qint64 maxBytes,
                          std::string_view setting);

inline std::string_view bytesView(const QByteArray& bytes) {
    return {bytes.constData(), static_cast<size_t>(bytes.size())};
}
