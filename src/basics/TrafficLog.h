#pragma once
#include <QFile>
#include <QObject>
#include <QTimer>

#include <string>
#include <string_view>

// "TessarkSrvLog.txt": one line per command sent or received while logging is on. A busy
// evening writes a line per relayed message, so lines are buffered and flushed on a short
// timer, when the buffer grows, and at close.
class TrafficLog : public QObject {
    Q_OBJECT
  public:
    explicit TrafficLog(QObject* parent = nullptr);
    ~TrafficLog() override;

    // Opens for output, truncating what an earlier run wrote.
    bool open(const QString& path);
    void writeLine(std::string_view line);
    void flush();
    void close();

  private:
    QFile file_;
    std::string buffer_;
    QTimer flushTimer_;
};

// "<date> - <time> : <label><index>: (<command>)<data>", one line of the traffic log.
std::string trafficLine(std::string_view label, std::string_view index, std::string_view command,
                        std::string_view data);
