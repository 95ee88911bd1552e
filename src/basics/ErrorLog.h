#pragma once
#include <QString>

#include <functional>
#include <string>

// "TessarkSrvErrorLog.txt": one line per trapped run-time error when logging is on, and
// writing it ends the program at once (no unload, no "DISCON", no "CLOSE1").
struct RuntimeError;

class ErrorLog {
  public:
    using EndProgram = std::function<void()>;
    // What happens when the log itself cannot be written (a read-only directory, a directory in
    // its place): the run-time error shows as it would with no trap at all, and the program
    // ends. Without it the program just ends.
    using Unwritable = std::function<void(const RuntimeError&)>;
    ErrorLog(QString path, bool enabled, EndProgram endProgram, Unwritable unwritable = {})
        : path_(std::move(path)), enabled_(enabled), endProgram_(std::move(endProgram)),
          unwritable_(std::move(unwritable)) {}

    bool enabled() const { return enabled_; }
    void setEnabled(bool on) { enabled_ = on; } // LogOn, fixed once start-up has read it
    const QString& path() const { return path_; }
    // Appends "<date> - <time> -/- Error at <message>" and ends the program. Never throws: it
    // runs where a routine's trap settles, which may be a destructor.
    void write(const std::string& message);

  private:
    QString path_;
    bool enabled_;
    EndProgram endProgram_;
    Unwritable unwritable_;
};
