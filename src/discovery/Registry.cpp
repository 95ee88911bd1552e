#include "discovery/Registry.h"

#include "basics/Text.h"

#include <QDir>
#include <QFile>
#include <QStringList>

#ifdef Q_OS_WIN
#include <windows.h>
#endif

namespace {

int hexDigit(QChar c) {
    const char16_t u = c.unicode();
    if (u >= '0' && u <= '9') return u - '0';
    if (u >= 'a' && u <= 'f') return u - 'a' + 10;
    if (u >= 'A' && u <= 'F') return u - 'A' + 10;
    return -1;
}

// Undoes Wine's escapes from position i of a line up to the closing character `end` (not
// escaped); i is left after it. Returns false when the line ends first.
bool unescapeUntil(const QString& line, qsizetype& i, QChar end, QString& out) {
    while (i < line.size()) {
        QChar c = line[i++];
        if (c == end) return true;
        if (c != '\\' || i >= line.size()) {
            out += c;
            continue;
        }
        QChar e = line[i++];
        switch (e.unicode()) {
        case 'a':
            out += QChar(7);
            break;
        case 'b':
            out += QChar(8);
            break;
        case 'e':
            out += QChar(27);
            break;
        case 'f':
            out += QChar(12);
            break;
        case 'n':
            out += QChar(10);
            break;
        case 'r':
            out += QChar(13);
            break;
        case 't':
            out += QChar(9);
            break;
        case 'v':
            out += QChar(11);
            break;
        case 'x': {
            uint v = 0;
            int digits = 0;
            while (digits < 4 && i < line.size() && hexDigit(line[i]) >= 0) {
                v = v * 16 + static_cast<uint>(hexDigit(line[i++]));
                ++digits;
            }
            out += digits ? QChar(static_cast<char16_t>(v)) : QChar('x');
            break;
        }
        default:
            if (e >= '0' && e <= '7') {
                uint v = static_cast<uint>(e.unicode() - '0');
                for (int digits = 1; digits < 3 && i < line.size() && line[i] >= '0' && line[i] <= '7';
                     ++digits)
                    v = v * 8 + static_cast<uint>(line[i++].unicode() - '0');
                out += QChar(static_cast<char16_t>(v));
            } else {
                out += e; // \\ and \" and anything else stand for themselves
            }
        }
    }
    return false;
}

// "[Software\\Vendor\\Key] 1700000000" -> "Software\Vendor\Key"
bool keyHeader(const QString& line, QString& key) {
    if (!line.startsWith('[')) return false;
    qsizetype i = 1;
    key.clear();
    return unescapeUntil(line, i, ']', key);
}

// "string" or dword:0000000a after the "=" of a value line.
RegistryValue valueData(const QString& line, qsizetype i) {
    RegistryValue value;
    if (i < line.size() && line[i] == '"') {
        QString text;
        ++i;
        if (!unescapeUntil(line, i, '"', text)) return value;
        value.kind = RegistryValue::String;
        value.text = text.toLatin1().toStdString();
        value.text.push_back('\0');
    } else if (line.mid(i, 6) == QLatin1String("dword:")) {
        bool ok = false;
        uint n = line.mid(i + 6).trimmed().toUInt(&ok, 16);
        if (ok) {
            value.kind = RegistryValue::DWord;
            value.number = n;
        }
    }
    return value;
}

QString normalisedKey(const std::string& key) {
    QString k = text::display(key);
    while (k.startsWith('\\'))
        k.remove(0, 1);
    return k;
}

#ifndef Q_OS_WIN
// "SOFTWARE\Vendor\Key" -> "SOFTWARE\Wow6432Node\Vendor\Key": where a 32-bit program's
// installer writes on a 64-bit machine. (Windows itself maps the 32-bit view.)
std::string wow64Twin(const std::string& key) {
    size_t slash = key.find('\\');
    if (slash == std::string::npos) return {};
    return key.substr(0, slash) + "\\Wow6432Node" + key.substr(slash);
}
#endif

} // namespace

QString winePrefixDir() {
    QString prefix = qEnvironmentVariable("WINEPREFIX");
    if (prefix.isEmpty()) prefix = QDir::homePath() + "/.wine";
    while (prefix.size() > 1 && prefix.endsWith('/'))
        prefix.chop(1);
    return prefix;
}

RegistryValue readWineRegistryValue(const QString& regFile, const std::string& subKey,
                                    const std::string& valueName) {
    QFile file(regFile);
    if (!file.open(QIODevice::ReadOnly)) return {};
    const QString wantedKey = normalisedKey(subKey);
    const QString wantedName = text::display(valueName);
    bool inKey = false;
    QString key;
    while (!file.atEnd()) {
        QString line = QString::fromUtf8(file.readLine());
        while (line.endsWith('\n') || line.endsWith('\r'))
            line.chop(1);
        if (keyHeader(line, key)) {
            if (inKey) return {}; // the key was there, the value was not
            inKey = key.compare(wantedKey, Qt::CaseInsensitive) == 0;
            continue;
        }
        if (!inKey) continue;
        QString name;
        qsizetype i = 0;
        if (line.startsWith('@')) {
            i = 1; // the key's default value, whose name is ""
        } else if (line.startsWith('"')) {
            i = 1;
            if (!unescapeUntil(line, i, '"', name)) continue;
        } else {
            continue;
        }
        if (i >= line.size() || line[i] != '=') continue;
        if (name.compare(wantedName, Qt::CaseInsensitive) == 0) return valueData(line, i + 1);
    }
    return {};
}

#ifdef Q_OS_WIN
namespace {
RegistryValue readWindowsValue(const std::string& subKey, const std::string& valueName) {
    RegistryValue value;
    HKEY key = nullptr;
    // Full access as the server always asked for; the 32-bit view holds a 32-bit program's key.
    if (RegOpenKeyExA(HKEY_LOCAL_MACHINE, subKey.c_str(), 0, 0x3F | KEY_WOW64_32KEY, &key) != ERROR_SUCCESS)
        return value;
    DWORD type = 0, size = 0;
    if (RegQueryValueExA(key, valueName.c_str(), nullptr, &type, nullptr, &size) == ERROR_SUCCESS) {
        if (type == REG_SZ) {
            std::string text(size, '\0');
            if (RegQueryValueExA(key, valueName.c_str(), nullptr, &type, reinterpret_cast<BYTE*>(text.data()),
                                 &size) == ERROR_SUCCESS) {
                text.resize(size);
                value.kind = RegistryValue::String;
                value.text = std::move(text);
            }
        } else if (type == REG_DWORD && size == sizeof(DWORD)) {
            DWORD n = 0;
            if (RegQueryValueExA(key, valueName.c_str(), nullptr, &type, reinterpret_cast<BYTE*>(&n),
                                 &size) == ERROR_SUCCESS) {
                value.kind = RegistryValue::DWord;
                value.number = n;
            }
        }
    }
    RegCloseKey(key);
    return value;
}
} // namespace
#endif

RegistryValue readRegistryValue(RegistryRoot, const std::string& subKey, const std::string& valueName) {
#ifdef Q_OS_WIN
    return readWindowsValue(subKey, valueName);
#else
    const QString systemReg = winePrefixDir() + "/system.reg";
    RegistryValue value = readWineRegistryValue(systemReg, subKey, valueName);
    if (value.kind == RegistryValue::Empty) {
        if (std::string twin = wow64Twin(subKey); !twin.empty())
            value = readWineRegistryValue(systemReg, twin, valueName);
    }
    return value;
#endif
}
