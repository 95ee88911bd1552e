#include "setups/SetupFile.h"

#include "basics/RuntimeError.h"
#include "basics/Text.h"

std::vector<std::string> readRawLines(const QString& path) {
    std::optional<std::vector<std::string>> lines = text::fileLines(path);
    if (!lines) throw errors::fileNotFound();
    return std::move(*lines);
}

std::string recordLineOrEmpty(std::string_view line) {
    size_t b = line.find_first_not_of(' ');
    if (b == std::string_view::npos) return {};
    size_t e = line.find_last_not_of(' ');
    std::string_view t = line.substr(b, e - b + 1);
    if (t.substr(0, 2) == "//") return {};
    return std::string(t);
}

SetupFileLines readSetupFile(const QString& path) {
    std::vector<std::string> lines = readRawLines(path);
    SetupFileLines setup;
    if (lines.empty()) return setup;
    setup.name = lines.front();
    for (size_t i = 1; i < lines.size(); ++i)
        if (std::string record = recordLineOrEmpty(lines[i]); !record.empty())
            setup.records.push_back(std::move(record));
    return setup;
}

SetupRecordFields interpretRecordLine(std::string_view line) {
    SetupRecordFields fields;
    fields.kind = std::string(line.substr(0, 6));
    fields.parts = text::splitAt(line.size() > 6 ? line.substr(6) : std::string_view());
    return fields;
}

SetupFileWriter::SetupFileWriter(const QString& path) : file_(path) {
    if (!file_.open(QIODevice::WriteOnly | QIODevice::Truncate))
        throw RuntimeError(75, "Path/File access error");
}

// A write the disk does not take (full, gone) must not leave a setup that looks whole: it is
// the run-time error a full disk gives.
static void check(bool written) {
    if (!written) throw RuntimeError(61, "Disk full");
}

void SetupFileWriter::line(std::string_view text) {
    const auto size = static_cast<qint64>(text.size());
    check(file_.write(text.data(), size) == size && file_.write("\r\n", 2) == 2);
}

void SetupFileWriter::close() {
    check(file_.flush());
    file_.close();
}
