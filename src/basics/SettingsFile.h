#pragma once
// A settings file the operator writes by hand: INI sections, "key = value" lines, comments
// starting with "#" or ";", blank lines. The server only reads it. Every entry keeps its line
// number, so a mistake can be named where it stands.
#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

struct SettingsEntry {
    QString section; // lower case; "" before the first section
    QString key;     // lower case
    QString value;   // trimmed; surrounding quotes removed
    int line = 0;
};

struct SettingsText {
    std::vector<SettingsEntry> entries;
    QStringList errors; // "line 7: ..." for lines that are neither of the above
};

// Settings files are small: anything larger is refused, not read.
inline constexpr qint64 kMaxSettingsFileBytes = 1024 * 1024;

SettingsText parseSettingsText(const QByteArray& bytes);
// The file's settings, or nothing with `error` set when it cannot be read (missing, too large,
// unreadable).
std::optional<SettingsText> readSettingsFile(const QString& path, QString* error);

// "4 MiB", "512 KiB", "10M", "1048576": a size in bytes, or nothing when it is none.
std::optional<qint64> parseByteSize(const QString& text);
