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
    bool isOpen() const { return file_.isOpen(); }
    void writeLine(std::string_view line);
    void flush();
    void close();

  private:
    QFile file_;
    std::string buffer_;
    QTimer flushTimer_;
};
