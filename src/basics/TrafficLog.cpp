#include "basics/TrafficLog.h"

#include "basics/Timestamp.h"

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
    if (!file_.open(QIODevice::WriteOnly | QIODevice::Truncate)) return false;
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
    file_.write(buffer_.data(), static_cast<qint64>(buffer_.size()));
    file_.flush();
    buffer_.clear();
}

void TrafficLog::close() {
    flushTimer_.stop();
    flush();
    if (file_.isOpen()) file_.close();
}

std::string trafficLine(std::string_view label, std::string_view index, std::string_view command,
                        std::string_view data) {
    std::string line = logTimestamp();
    line += " : ";
    line += label;
    line += index;
    line += ": (";
    line += command;
    line += ')';
    line += data;
    return line;
}
