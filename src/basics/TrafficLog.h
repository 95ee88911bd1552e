#pragma once
#include <QFile>
#include <QObject>
#include <QTimer>

#include <string>
#include <string_view>

// "TessarkSrvLog.txt": one line per command sent or received while logging is on. A busy
// evening writes a line per relayed message, so lines are buffered and flushed on a short
// timer, when the buffer grows, and at close.
//
// A log the disk no longer takes (full, gone) costs the lines it could not take and nothing
// else: the server runs on, the file keeps whole lines only, the operator's log says once that
// lines are being lost and once, with how many, when the log is written again.
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
    bool failing_ = false;
    qint64 linesLost_ = 0;
};

// "<date> - <time> : <label><index>: (<command>)<data>", one line of the traffic log. A peer's
// bytes that would break or forge lines (CR, LF and every other control byte, DEL) are written as
// \xNN; every other byte, the backslash included, as it came.
std::string trafficLine(std::string_view label, std::string_view index, std::string_view command,
                        std::string_view data);
