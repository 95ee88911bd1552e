#pragma once
// The operator's log: one line per event an operator would want to know (who came and went,
// what was refused, which setups were loaded, why the server stopped), apart from the traffic
// and error logs that LOG=1 switches on. Code writes to it through Qt's logging categories:
//
//   qCInfo(lcPeers, "player connection %d from %s", slot, qUtf8Printable(address));
//
// Lines go to standard error always (with journald's priority prefixes when standard error is
// the journal) and to a file when one is asked for; a file is capped in size and rotated, and
// reopened on request (logrotate's SIGHUP). Nothing here sits on the path of a relayed message.
#include <QLoggingCategory>
#include <QString>

#include <optional>

Q_DECLARE_LOGGING_CATEGORY(lcRun)    // start-up, settings, shutdown
Q_DECLARE_LOGGING_CATEGORY(lcPeers)  // connections, registrations, verdicts, the AI Spy link
Q_DECLARE_LOGGING_CATEGORY(lcAccess) // connections refused, peers let go, kicks and bans
Q_DECLARE_LOGGING_CATEGORY(lcSetups) // the setup catalogue
Q_DECLARE_LOGGING_CATEGORY(lcTrap)   // statements skipped with logging off (debug)

enum class LogLevel { Error, Warning, Info, Debug };

// "error", "warning", "info", "debug"; nothing for any other word.
std::optional<LogLevel> logLevelNamed(const QString& word);
const char* logLevelName(LogLevel level);

struct OperatorLogOptions {
    LogLevel level = LogLevel::Info;
    QString file;                           // empty: standard error only
    qint64 maxFileBytes = 10 * 1024 * 1024; // then the file is rotated
    int keptFiles = 3;                      // file.1 .. file.N; 0 starts the file afresh instead
};

namespace operator_log {

// Takes over Qt's message output for the whole process. Until this is called Qt's default
// output serves (tests that do not ask for the log keep it).
void install(const OperatorLogOptions& options);
// New options for a running log (a reload): the level at once, the file reopened if it changed.
void apply(const OperatorLogOptions& options);
// Closes and opens the file again under its name, after logrotate moved it away.
void reopenFile();
// Says on the log why the file could not be opened, if it could not (then lines go to standard
// error only): at start, and after a reload.
void tellFileError();

// A line as the file gets it, for tests: "<time> <level> <category>: <text>".
QString formatLine(QtMsgType type, const char* category, const QString& text);

} // namespace operator_log
