#pragma once
// Properties of the readers of files an operator may have edited by hand (setup files and
// tessark.ini) and of the leading-number rule that reads numbers out of peers' payloads. Each
// returns "" when the input passed, or what went wrong. Shared with the corpus replay test.
#include "basics/CappedRead.h"
#include "basics/IniFile.h"
#include "basics/Text.h"
#include "setups/SetupFile.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>

#include <cmath>
#include <string>
#include <string_view>

namespace fuzzchecks {

// The readers' caps here: small enough that the fuzzer's inputs fall on both sides of them.
inline constexpr qint64 kFuzzCap = 2048;

// A scratch file of this process's own, holding the input's bytes.
inline QString scratchFile(std::string_view bytes) {
    const QString path =
        QDir::tempPath() + "/tessark-fuzz-" + QString::number(QCoreApplication::applicationPid());
    QFile file(path);
    file.open(QIODevice::WriteOnly | QIODevice::Truncate);
    file.write(bytes.data(), static_cast<qint64>(bytes.size()));
    return path;
}

// The name is line 1 as it stands; records are trimmed, never blank, never comments; the import
// reader's kind and values put back together give the line again. A file beyond the cap is
// refused whole, with the cap's own error.
inline std::string setupFile(std::string_view input) {
    const QString path = scratchFile(input);
    SetupFileLines setup;
    try {
        setup = readSetupFile(path, kFuzzCap);
    } catch (const RuntimeError& e) {
        QFile::remove(path);
        if (e.number != kFileTooLarge) return "reading raised " + std::to_string(e.number);
        return static_cast<qint64>(input.size()) > kFuzzCap ? std::string() : "refused within the cap";
    }
    QFile::remove(path);
    if (static_cast<qint64>(input.size()) > kFuzzCap) return "read beyond the cap";
    const size_t end = input.find_first_of("\r\n");
    if (setup.name != input.substr(0, end)) return "name is not line 1";
    for (const std::string& record : setup.records) {
        if (record.empty() || record.front() == ' ' || record.back() == ' ') return "record not trimmed";
        if (record.substr(0, 2) == "//") return "comment kept as a record";
        if (record.find_first_of("\r\n") != std::string::npos) return "line end inside a record";
        const SetupRecordFields fields = interpretRecordLine(record);
        std::string joined = fields.kind;
        for (int i = 1; i <= fields.parts.ubound(); ++i)
            joined += (i > 1 ? "@" : "") + fields.parts[i];
        if (record.size() > 6 && joined != record) return "kind and values do not give the line back";
    }
    return {};
}

// Reading never yields more than 749 characters or a line end; a value written is read back. A
// file beyond the cap is neither read nor written over.
inline std::string iniFile(std::string_view input) {
    const QString path = scratchFile(input);
    if (static_cast<qint64>(input.size()) > kFuzzCap) {
        std::string failure;
        try {
            readIni("SETUPLIST", "NUM", path, kFuzzCap);
            failure = "read beyond the cap";
        } catch (const RuntimeError& e) {
            if (e.number != kFileTooLarge) failure = "reading raised " + std::to_string(e.number);
        }
        try {
            writeIni("SETUPLIST", "NUM", "7", path, kFuzzCap);
            failure = "written over beyond the cap";
        } catch (const RuntimeError&) {
        }
        QFile file(path);
        file.open(QIODevice::ReadOnly);
        if (file.readAll() != QByteArray(input.data(), static_cast<qsizetype>(input.size())))
            failure = "a file beyond the cap changed";
        file.close();
        QFile::remove(path);
        return failure;
    }
    for (const char* key : {"NUM", "num", "LOG", "FNAME"})
        for (const char* section : {"SETUPLIST", "DEBUG", "setuplist1"}) {
            const std::string value = readIni(section, key, path, kFuzzCap);
            if (value.size() > 749) return "value longer than 749";
            if (value.find_first_of("\r\n") != std::string::npos) return "line end inside a value";
        }
    // Written with room to grow: two keys more may take it past the cap.
    writeIni("SETUPLIST", "NUM", "7", path, 2 * kFuzzCap);
    writeIni("SetupList2", "fname", "C:\\x y\\z.stp", path, 2 * kFuzzCap);
    const std::string num = readIni("setuplist", "num", path, 2 * kFuzzCap),
                      fname = readIni("SETUPLIST2", "FNAME", path, 2 * kFuzzCap);
    QFile::remove(path);
    if (num != "7") return "NUM written as 7 reads \"" + num + "\"";
    if (fname != "C:\\x y\\z.stp") return "FNAME written reads \"" + fname + "\"";
    return {};
}

// A finite number; blanks before it change nothing; in 16 bits it either fits or overflows.
inline std::string leadingNumber(std::string_view input) {
    const double value = text::leadingNumber(input);
    if (!std::isfinite(value) && value == value) return {}; // a run of digits past double's range
    if (value != value) return "not a number";
    if (text::leadingNumber("  " + std::string(input)) != value) return "leading blanks change the number";
    try {
        const int16_t n = text::toInt16(value);
        if (std::fabs(n - value) > 0.5) return "rounded more than half away";
    } catch (const RuntimeError& e) {
        if (e.number != 6) return "16-bit conversion raised " + std::to_string(e.number);
        if (std::fabs(value) < 32767) return "overflow inside the 16-bit range";
    }
    return {};
}

} // namespace fuzzchecks
