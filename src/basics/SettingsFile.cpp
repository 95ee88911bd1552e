#include "basics/SettingsFile.h"

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QStringList>

namespace {

QString unquoted(QString value) {
    value = value.trimmed();
    if (value.size() >= 2 && (value.front() == '"' || value.front() == '\'') && value.back() == value.front())
        value = value.mid(1, value.size() - 2);
    return value;
}

// A comment may also follow a value, after blanks: "level = info   # or debug".
QString withoutTrailingComment(const QString& value) {
    static const QRegularExpression comment(R"(\s+[#;].*$)");
    return QString(value).remove(comment);
}

} // namespace

SettingsText parseSettingsText(const QByteArray& bytes) {
    SettingsText text;
    QString section;
    const QStringList lines = QString::fromUtf8(bytes).split('\n');
    for (int i = 0; i < lines.size(); ++i) {
        const int number = i + 1;
        const QString line = lines[i].trimmed();
        if (line.isEmpty() || line.startsWith('#') || line.startsWith(';')) continue;
        if (line.startsWith('[')) {
            const qsizetype close = line.indexOf(']');
            if (close < 0 || !line.mid(close + 1).trimmed().isEmpty()) {
                text.errors << QString("line %1: \"%2\" is not a [section] header").arg(number).arg(line);
                continue;
            }
            section = line.mid(1, close - 1).trimmed().toLower();
            continue;
        }
        const qsizetype eq = line.indexOf('=');
        if (eq <= 0) {
            text.errors << QString("line %1: \"%2\" is not \"key = value\"").arg(number).arg(line);
            continue;
        }
        text.entries.push_back({section, line.left(eq).trimmed().toLower(),
                                unquoted(withoutTrailingComment(line.mid(eq + 1))), number});
    }
    return text;
}

std::optional<SettingsText> readSettingsFile(const QString& path, QString* error) {
    QFile file(path);
    // A pipe or a device in the file's place would block the server or never end.
    if (file.exists() && !QFileInfo(path).isFile()) {
        if (error) *error = "not a regular file";
        return std::nullopt;
    }
    if (!file.open(QIODevice::ReadOnly)) {
        if (error) *error = file.errorString();
        return std::nullopt;
    }
    const QByteArray bytes = file.read(kMaxSettingsFileBytes + 1);
    if (bytes.size() > kMaxSettingsFileBytes) {
        if (error) *error = QString("larger than %1 bytes").arg(kMaxSettingsFileBytes);
        return std::nullopt;
    }
    return parseSettingsText(bytes);
}

std::optional<qint64> parseByteSize(const QString& text) {
    static const QRegularExpression size(R"(^\s*(\d+)\s*(|b|k|kb|kib|m|mb|mib|g|gb|gib)\s*$)",
                                         QRegularExpression::CaseInsensitiveOption);
    const QRegularExpressionMatch match = size.match(text);
    if (!match.hasMatch()) return std::nullopt;
    bool ok = false;
    const qint64 n = match.captured(1).toLongLong(&ok);
    if (!ok) return std::nullopt;
    const QChar unit = match.captured(2).isEmpty() ? QChar('b') : match.captured(2).front().toLower();
    const int shift = unit == 'k' ? 10 : unit == 'm' ? 20 : unit == 'g' ? 30 : 0;
    if (n > (std::numeric_limits<qint64>::max() >> shift)) return std::nullopt;
    return n << shift;
}
