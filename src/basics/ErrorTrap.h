#pragma once
// Runs a routine's statements the way the whole server handles failures: a statement that
// raises a RuntimeError is skipped and the routine goes on; when the routine ends, the last
// pending error is written to the error log (which ends the program) if logging is on, and
// is cleared otherwise.
//
//   ErrorTrap trap(errorLog, "DeletePlayer");
//   trap([&] { sockets.unload(slot); });
#include "basics/ErrorLog.h"
#include "basics/RuntimeError.h"

#include <optional>
#include <string>
#include <string_view>

class ErrorTrap {
  public:
    ErrorTrap(ErrorLog& log, std::string_view routine) : log_(log), routine_(routine) {}
    ~ErrorTrap() { settle(); }
    ErrorTrap(const ErrorTrap&) = delete;
    ErrorTrap& operator=(const ErrorTrap&) = delete;

    // Runs one statement; returns false when it failed (and was skipped).
    template <typename Statement> bool operator()(Statement&& statement) {
        try {
            statement();
            return true;
        } catch (const RuntimeError& e) {
            pending_ = e;
            return false;
        }
    }
    void raise(const RuntimeError& e) { pending_ = e; }
    // A checked result into `into`; a failure is left pending and `into` keeps its value.
    template <typename T> bool take(const Checked<T>& result, T& into) {
        if (!result.ok()) {
            raise(result.failure());
            return false;
        }
        into = result.value;
        return true;
    }
    // Leaves the error pending unless the condition holds; returns the condition.
    bool require(bool condition, RuntimeError (*failure)()) {
        if (!condition) raise(failure());
        return condition;
    }
    bool pending() const { return pending_.has_value(); }

    // Settles now, with text appended to the logged message (a routine's own detail).
    void settle(std::string_view suffix = {});

  private:
    ErrorLog& log_;
    std::string_view routine_; // always a literal: the routines are named in the code
    std::optional<RuntimeError> pending_;
};
