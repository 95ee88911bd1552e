#include "server/IniFile.h"

#include "net/Text.h"

#include <QFile>
#include <QSaveFile>

#include <algorithm>
#include <optional>
#include <vector>

namespace {

constexpr size_t kValueLimit = 749; // a 750-character buffer with its terminating NUL

std::string trim(const std::string& s) {
    const char* blanks = " \t\r\n";
    size_t b = s.find_first_not_of(blanks);
    if (b == std::string::npos) return {};
    size_t e = s.find_last_not_of(blanks);
    return s.substr(b, e - b + 1);
}

bool sameText(const std::string& a, const std::string& b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               return std::tolower(static_cast<unsigned char>(x)) == std::tolower(static_cast<unsigned char>(y));
           });
}

std::string upper(std::string s) {
    std::transform(s.begin(), s.end(), s.begin(), [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return s;
}

std::vector<std::string> readLines(const QString& fileName) {
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly)) return {};
    const QByteArray all = file.readAll();
    return text::splitLines(std::string_view(all.constData(), static_cast<size_t>(all.size())));
}

// The section name of a "[name]" line, or nothing for any other line.
std::optional<std::string> sectionOf(const std::string& line) {
    std::string t = trim(line);
    if (t.size() < 2 || t.front() != '[') return std::nullopt;
    size_t close = t.find(']');
    if (close == std::string::npos) return std::nullopt;
    return trim(t.substr(1, close - 1));
}

// The key of a "key=value" line, with the value through valueOut.
std::optional<std::string> keyOf(const std::string& line, std::string* valueOut = nullptr) {
    size_t eq = line.find('=');
    if (eq == std::string::npos) return std::nullopt;
    std::string key = trim(line.substr(0, eq));
    if (key.empty() || key[0] == ';') return std::nullopt;
    if (valueOut) *valueOut = trim(line.substr(eq + 1));
    return key;
}

} // namespace

std::string ReadINI(const std::string& section, const std::string& key, const QString& fileName) {
    bool inSection = false;
    for (const std::string& line : readLines(fileName)) {
        if (auto name = sectionOf(line)) {
            inSection = sameText(*name, section);
            continue;
        }
        std::string value;
        if (!inSection) continue;
        auto k = keyOf(line, &value);
        if (!k || !sameText(*k, key)) continue;
        if (value.size() >= 2 && (value.front() == '"' || value.front() == '\'') && value.back() == value.front())
            value = value.substr(1, value.size() - 2);
        if (value.size() > kValueLimit) value.resize(kValueLimit);
        return value;
    }
    return {};
}

void WriteINI(const std::string& section, const std::string& key, const std::string& value,
              const QString& fileName) {
    std::vector<std::string> lines = readLines(fileName);
    const std::string entry = upper(key) + "=" + value;

    std::optional<size_t> sectionLine, lastEntryOfSection;
    size_t i = 0;
    for (; i < lines.size(); ++i) {
        if (auto name = sectionOf(lines[i])) {
            if (sectionLine) break; // the next section begins
            if (sameText(*name, section)) sectionLine = lastEntryOfSection = i;
            continue;
        }
        if (!sectionLine) continue;
        if (auto k = keyOf(lines[i]); k && sameText(*k, key)) {
            lines[i] = entry;
            lastEntryOfSection.reset();
            break;
        }
        if (!trim(lines[i]).empty()) lastEntryOfSection = i;
    }
    if (!sectionLine) {
        lines.push_back("[" + section + "]");
        lines.push_back(entry);
    } else if (lastEntryOfSection) {
        lines.insert(lines.begin() + static_cast<long>(*lastEntryOfSection) + 1, entry);
    }

    QSaveFile file(fileName);
    if (!file.open(QIODevice::WriteOnly)) return;
    for (const std::string& line : lines) {
        file.write(line.data(), static_cast<qint64>(line.size()));
        file.write("\r\n", 2);
    }
    file.commit();
}
