#pragma once
// The two logs of a run, as every component writes to them: the error log, whose switch is the
// logging switch, and the traffic log, written only while logging is on.
#include "basics/ErrorLog.h"
#include "basics/TrafficLog.h"

#include <string_view>

struct RunLogs {
    ErrorLog& errors;
    TrafficLog& traffic;

    bool on() const { return errors.enabled(); }
    void write(std::string_view line) const {
        if (on()) traffic.writeLine(line);
    }
};
