#include "basics/TrafficLog.h"

#include "basics/OperatorLog.h"
#include "basics/Timestamp.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace {
constexpr size_t kFlushAt = 256 * 1024;
constexpr int kFlushIntervalMs = 500;
} // namespace

TrafficLog::TrafficLog(QObject* parent) : QObject(parent) {
    flushTimer_.setInterval(kFlushIntervalMs);
    connect(&flushTimer_, &QTimer::timeout, this, &TrafficLog::flush);
}

TrafficLog::~TrafficLog() {
    close();
}

bool TrafficLog::open(const QString& path) {
    file_.setFileName(path);
    // Unbuffered: the lines are gathered here, and a write the disk refuses is then known at once,
    // with nothing left behind in a buffer of the file's own.
    if (!file_.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered)) return false;
    flushTimer_.start();
    return true;
}

void TrafficLog::writeLine(std::string_view line) {
    if (!file_.isOpen()) return;
    buffer_.append(line);
    buffer_.append("\r\n");
    if (buffer_.size() >= kFlushAt) flush();
}

void TrafficLog::flush() {
    if (buffer_.empty() || !file_.isOpen()) return;
    const qint64 before = file_.size();
    const auto size = static_cast<qint64>(buffer_.size());
    errno = 0;
    const bool written = file_.write(buffer_.data(), size) == size;
    const int error = errno;
    if (written) {
        if (failing_)
            qCWarning(lcRun, "the traffic log %s is written again; %lld lines were lost",
                      qUtf8Printable(file_.fileName()), linesLost_);
        failing_ = false;
        linesLost_ = 0;
    } else {
        // A half-written line would run into the next one: the file goes back to its last whole line.
        file_.resize(before);
        file_.seek(before);
        linesLost_ += std::count(buffer_.begin(), buffer_.end(), '\n');
        if (!failing_)
            qCCritical(lcRun, "the traffic log %s cannot be written (%s): its lines are lost until it can",
                       qUtf8Printable(file_.fileName()),
                       error != 0 ? std::strerror(error) : qUtf8Printable(file_.errorString()));
        failing_ = true;
    }
    file_.unsetError();
    buffer_.clear();
}

void TrafficLog::close() {
    flushTimer_.stop();
    flush();
    if (file_.isOpen()) file_.close();
}

namespace {
bool isControl(unsigned char c) {
    return c < 0x20 || c == 0x7f;
}

void appendEscaped(std::string& line, std::string_view peerBytes) {
    // Ordinary traffic has no control byte: it is appended in one piece.
    if (std::none_of(peerBytes.begin(), peerBytes.end(),
                     [](char c) { return isControl(static_cast<unsigned char>(c)); })) {
        line += peerBytes;
        return;
    }
    static constexpr char kHex[] = "0123456789abcdef";
    for (char c : peerBytes) {
        const auto byte = static_cast<unsigned char>(c);
        if (!isControl(byte)) {
            line += c;
            continue;
        }
        line += "\\x";
        line += kHex[byte >> 4];
        line += kHex[byte & 0xf];
    }
}
} // namespace

std::string trafficLine(std::string_view label, std::string_view index, std::string_view command,
                        std::string_view data) {
    std::string line = logTimestamp();
    line += " : ";
    line += label;
    line += index;
    line += ": (";
    appendEscaped(line, command);
    line += ')';
    appendEscaped(line, data);
    return line;
}
