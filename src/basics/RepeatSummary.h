#pragma once
// Events that may come in floods (connections, refusals, peers let go) as lines of the
// operator's log: the first few of a kind in a second are told at once, the rest of that second
// are counted and told as one line when it is over, and while the flood lasts only that line is
// told. A flood of a thousand connections a second is one line a second, not a thousand.
#include <QHash>
#include <QLoggingCategory>
#include <QObject>
#include <QString>
#include <QTimer>

class RepeatSummary : public QObject {
  public:
    explicit RepeatSummary(const QLoggingCategory& (*category)(), QObject* parent = nullptr);
    // What was counted in the last second is told, not lost, when the server stops.
    ~RepeatSummary() override;

    // One event of a kind ("player connections from 203.0.113.9"): logged as `line` while the
    // kind is under its few lines a second, else counted.
    void note(const QString& kind, const QString& line);
    // Tells what was counted so far (at shutdown).
    void flush();

  private:
    const QLoggingCategory& (*category_)();
    struct Kind {
        int told = 0;     // lines told this second
        int counted = 0;  // events counted, not told
        bool hot = false; // counted in the second before: a flood goes on
    };
    QHash<QString, Kind> kinds_;
    QTimer second_;
};
