#pragma once
#include <QString>

#include <functional>
#include <string>

// "TessarkSrvErrorLog.txt": one line per trapped run-time error when logging is on, and
// writing it ends the program at once (no unload, no "DISCON", no "CLOSE1").
class ErrorLog {
public:
    using EndProgram = std::function<void()>;
    ErrorLog(QString path, bool enabled, EndProgram endProgram)
        : path_(std::move(path)), enabled_(enabled), endProgram_(std::move(endProgram)) {}

    bool enabled() const { return enabled_; }
    void setEnabled(bool on) { enabled_ = on; } // LogOn, fixed once start-up has read it
    const QString& path() const { return path_; }
    // Appends "<date> - <time> -/- Error at <message>" and ends the program.
    void write(const std::string& message);

private:
    QString path_;
    bool enabled_;
    EndProgram endProgram_;
};
