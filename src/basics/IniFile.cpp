#include "basics/IniFile.h"

#include "basics/CappedRead.h"
#include "basics/RuntimeError.h"
#include "basics/Text.h"
#include "basics/WholeFile.h"

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

// The file's bytes; none when it is missing or cannot be opened, which reads as empty.
QByteArray readBytes(const QString& fileName, qint64 maxBytes) {
    try {
        return readCapped(fileName, maxBytes, "[files] max-ini-size");
    } catch (const RuntimeError& e) {
        if (e.number == errors::fileNotFound().number) return {};
        throw;
    }
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

IniSnapshot::IniSnapshot(const QString& fileName, qint64 maxBytes) {
    const QByteArray bytes = readBytes(fileName, maxBytes);
    std::string section;
    bool inSection = false;
    text::LineCursor lines(bytesView(bytes));
    for (std::string_view view; lines.next(view);) {
        const std::string line(view);
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

std::string readIni(const std::string& section, const std::string& key, const QString& fileName,
                    qint64 maxBytes) {
    return IniSnapshot(fileName, maxBytes).read(section, key);
}

void writeIni(const std::string& section, const std::string& key, const std::string& value,
              const QString& fileName, qint64 maxBytes) {
    writeIniAll({{section, key, value}}, fileName, maxBytes);
}

namespace {
void writeLines(std::vector<std::string> lines, const std::vector<IniEntry>& entries,
                const QString& fileName) {
    for (const IniEntry& e : entries)
        applyEntry(lines, e);
    std::string text;
    for (const std::string& line : lines)
        text.append(line).append("\r\n");
    writeWholeFile(fileName, text);
}
} // namespace

void writeIniAll(const std::vector<IniEntry>& entries, const QString& fileName, qint64 maxBytes) {
    writeLines(text::splitLines(bytesView(readBytes(fileName, maxBytes))), entries, fileName);
}

void replaceIni(const std::vector<IniEntry>& entries, const QString& fileName) {
    writeLines({}, entries, fileName);
}
