#include "basics/IniFile.h"

#include "basics/Text.h"

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
               return std::tolower(static_cast<unsigned char>(x)) ==
                      std::tolower(static_cast<unsigned char>(y));
           });
}

std::vector<std::string> readLines(const QString& fileName) {
    return text::fileLines(fileName).value_or(std::vector<std::string>{});
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

namespace {

std::string lower(std::string s) {
    std::transform(s.begin(), s.end(), s.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return s;
}

std::string valueAsRead(std::string value) {
    if (value.size() >= 2 && (value.front() == '"' || value.front() == '\'') && value.back() == value.front())
        value = value.substr(1, value.size() - 2);
    if (value.size() > kValueLimit) value.resize(kValueLimit);
    return value;
}

// One key into the lines as the profile functions would write it.
void applyEntry(std::vector<std::string>& lines, const IniEntry& e) {
    const std::string entry = text::upper(e.key) + "=" + e.value;
    std::optional<size_t> sectionLine, lastEntryOfSection;
    size_t i = 0;
    for (; i < lines.size(); ++i) {
        if (auto name = sectionOf(lines[i])) {
            if (sectionLine) break; // the next section begins
            if (sameText(*name, e.section)) sectionLine = lastEntryOfSection = i;
            continue;
        }
        if (!sectionLine) continue;
        if (auto k = keyOf(lines[i]); k && sameText(*k, e.key)) {
            lines[i] = entry;
            lastEntryOfSection.reset();
            break;
        }
        if (!trim(lines[i]).empty()) lastEntryOfSection = i;
    }
    if (!sectionLine) {
        lines.push_back("[" + e.section + "]");
        lines.push_back(entry);
    } else if (lastEntryOfSection) {
        lines.insert(lines.begin() + static_cast<long>(*lastEntryOfSection) + 1, entry);
    }
}

} // namespace

IniSnapshot::IniSnapshot(const QString& fileName) {
    std::string section;
    bool inSection = false;
    for (const std::string& line : readLines(fileName)) {
        if (auto name = sectionOf(line)) {
            section = lower(*name);
            inSection = true;
            continue;
        }
        std::string value;
        auto k = inSection ? keyOf(line, &value) : std::nullopt;
        if (k) values_.emplace(section + "\n" + lower(*k), valueAsRead(std::move(value)));
    }
}

std::string IniSnapshot::read(const std::string& section, const std::string& key) const {
    const auto found = values_.find(lower(section) + "\n" + lower(key));
    return found == values_.end() ? std::string() : found->second;
}

std::string readIni(const std::string& section, const std::string& key, const QString& fileName) {
    return IniSnapshot(fileName).read(section, key);
}

void writeIni(const std::string& section, const std::string& key, const std::string& value,
              const QString& fileName) {
    writeIniAll({{section, key, value}}, fileName);
}

void writeIniAll(const std::vector<IniEntry>& entries, const QString& fileName) {
    std::vector<std::string> lines = readLines(fileName);
    for (const IniEntry& e : entries)
        applyEntry(lines, e);
    QSaveFile file(fileName);
    if (!file.open(QIODevice::WriteOnly)) return;
    for (const std::string& line : lines) {
        file.write(line.data(), static_cast<qint64>(line.size()));
        file.write("\r\n", 2);
    }
    file.commit();
}
