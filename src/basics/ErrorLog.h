#pragma once
#include <QString>

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// "TessarkSrvErrorLog.txt": one line per trapped run-time error when logging is on, and
// writing it ends the program at once (no unload, no "DISCON", no "CLOSE1"). Every trapped
// error is also counted by routine for the operator's status, and told on the operator's log:
// as a debug line when logging is off (the statement was skipped and the server goes on), as an
// error naming routine, number and text when it ends the server.
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

    // A routine's trap settles with an error pending: counted; then written (which ends the
    // program) when logging is on, else cleared. `routine` is the routine's name as written
    // ("Timer1_Timer"); `suffix` the routine's own detail after the description.
    void trapped(std::string_view routine, const RuntimeError& error, std::string_view suffix = {});
    // Appends "<date> - <time> -/- Error at <message>" and ends the program. Never throws: it
    // runs where a routine's trap settles, which may be a destructor.
    void write(const std::string& message);

    // Trapped errors by routine since start, in the order first seen.
    std::vector<std::pair<std::string, qint64>> countsByRoutine() const;

  private:
    QString path_;
    bool enabled_;
    EndProgram endProgram_;
    Unwritable unwritable_;
    // Routine names are literals: looked up by address first, which is what a flood of bad
    // messages costs; the same name from two places is merged when the counts are read.
    std::vector<std::pair<const char*, qint64>> counts_;
};
