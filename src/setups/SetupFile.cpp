#include "setups/SetupFile.h"

#include "basics/CappedRead.h"
#include "basics/RuntimeError.h"
#include "basics/Text.h"

namespace {
constexpr std::string_view kSetupCap = "[files] max-setup-size";
}

std::vector<std::string> readRawLines(const QString& path, qint64 maxBytes) {
    return text::splitLines(bytesView(readCapped(path, maxBytes, kSetupCap)));
}

std::string recordLineOrEmpty(std::string_view line) {
    size_t b = line.find_first_not_of(' ');
    if (b == std::string_view::npos) return {};
    size_t e = line.find_last_not_of(' ');
    std::string_view t = line.substr(b, e - b + 1);
    if (t.substr(0, 2) == "//") return {};
    return std::string(t);
}

SetupFileLines readSetupFile(const QString& path, qint64 maxBytes) {
    const QByteArray bytes = readCapped(path, maxBytes, kSetupCap);
    text::LineCursor lines(bytesView(bytes));
    SetupFileLines setup;
    std::string_view line;
    if (!lines.next(line)) return setup;
    setup.name = std::string(line);
    while (lines.next(line))
        if (std::string record = recordLineOrEmpty(line); !record.empty())
            setup.records.push_back(std::move(record));
    return setup;
}

SetupRecordFields interpretRecordLine(std::string_view line) {
    SetupRecordFields fields;
    fields.kind = std::string(line.substr(0, 6));
    fields.parts = text::splitAt(line.size() > 6 ? line.substr(6) : std::string_view());
    return fields;
}

void SetupFileWriter::line(std::string_view text) {
    file_.write(text);
    file_.write("\r\n");
}
