#include "basics/OperatorLog.h"

#include <QDateTime>
#include <QFile>
#include <QMutex>
#include <QMutexLocker>

#include <atomic>
#include <cstdio>
#include <cstring>

#ifndef Q_OS_WIN
#include <sys/stat.h>
#include <unistd.h>
#endif

// Info and above until the operator's settings say otherwise: a debug line costs nothing then.
Q_LOGGING_CATEGORY(lcRun, "tessark.run", QtInfoMsg)
Q_LOGGING_CATEGORY(lcPeers, "tessark.peers", QtInfoMsg)
Q_LOGGING_CATEGORY(lcAccess, "tessark.access", QtInfoMsg)
Q_LOGGING_CATEGORY(lcSetups, "tessark.setups", QtInfoMsg)
Q_LOGGING_CATEGORY(lcTrap, "tessark.trap", QtInfoMsg)

namespace {

constexpr char kOwnPrefix[] = "tessark.";

#ifdef Q_OS_WIN
constexpr char kLineEnd[] = "\r\n";
#else
constexpr char kLineEnd[] = "\n";
#endif

struct Sink {
    QMutex mutex;
    OperatorLogOptions options;
    QFile file;
    qint64 fileSize = 0;
    QString fileError;
    bool journal = false; // standard error is the journal: priorities, no timestamps
};

Sink& sink() {
    static Sink* s = new Sink; // lives to the very end: Qt may log from static destructors
    return *s;
}

std::atomic<int> enabledLevel{static_cast<int>(LogLevel::Info)};
QLoggingCategory::CategoryFilter previousFilter = nullptr;

int levelOf(QtMsgType type) {
    switch (type) {
    case QtDebugMsg:
        return static_cast<int>(LogLevel::Debug);
    case QtInfoMsg:
        return static_cast<int>(LogLevel::Info);
    case QtWarningMsg:
        return static_cast<int>(LogLevel::Warning);
    default:
        return static_cast<int>(LogLevel::Error);
    }
}

// The project's categories follow the operator's level; Qt's own keep their defaults.
void filterCategories(QLoggingCategory* category) {
    if (previousFilter) previousFilter(category);
    if (std::strncmp(category->categoryName(), kOwnPrefix, sizeof kOwnPrefix - 1) != 0) return;
    const int level = enabledLevel.load();
    for (QtMsgType type : {QtDebugMsg, QtInfoMsg, QtWarningMsg, QtCriticalMsg})
        category->setEnabled(type, levelOf(type) <= level);
}

const char* typeWord(QtMsgType type) {
    switch (type) {
    case QtDebugMsg:
        return "debug";
    case QtInfoMsg:
        return "info";
    case QtWarningMsg:
        return "warning";
    default:
        return "error";
    }
}

// syslog's priorities, which journald reads from the start of each line.
const char* journalPriority(QtMsgType type) {
    switch (type) {
    case QtDebugMsg:
        return "<7>";
    case QtInfoMsg:
        return "<6>";
    case QtWarningMsg:
        return "<4>";
    case QtCriticalMsg:
        return "<3>";
    default:
        return "<2>";
    }
}

QString shortCategory(const char* category) {
    if (!category) return "default";
    if (std::strncmp(category, kOwnPrefix, sizeof kOwnPrefix - 1) == 0)
        return category + sizeof kOwnPrefix - 1;
    return category;
}

// systemd names the journal stream it gave a service as "device:inode" of the descriptor.
bool standardErrorIsJournal() {
#ifdef Q_OS_WIN
    return false;
#else
    const QByteArray stream = qgetenv("JOURNAL_STREAM");
    if (stream.isEmpty()) return false;
    struct stat st {};
    if (fstat(STDERR_FILENO, &st) != 0) return false;
    return stream == QByteArray::number(static_cast<qulonglong>(st.st_dev)) + ':' +
                         QByteArray::number(static_cast<qulonglong>(st.st_ino));
#endif
}

void openFile(Sink& s) {
    s.file.close();
    s.fileError.clear();
    s.fileSize = 0;
    if (s.options.file.isEmpty()) return;
    s.file.setFileName(s.options.file);
    if (!s.file.open(QIODevice::WriteOnly | QIODevice::Append)) {
        s.fileError = s.file.errorString();
        return;
    }
    s.fileSize = s.file.size();
}

// The full file moves aside as file.1 (file.1 to file.2, and so on; the oldest goes), and a new
// one begins. Without kept files it just begins again.
void rotate(Sink& s) {
    const QString name = s.options.file;
    s.file.close();
    if (s.options.keptFiles > 0) {
        QFile::remove(name + "." + QString::number(s.options.keptFiles));
        for (int k = s.options.keptFiles - 1; k >= 1; --k)
            QFile::rename(name + "." + QString::number(k), name + "." + QString::number(k + 1));
        QFile::rename(name, name + ".1");
    } else {
        QFile::remove(name);
    }
    openFile(s);
}

void writeFileLine(Sink& s, const QByteArray& line) {
    if (!s.file.isOpen()) return;
    if (s.options.maxFileBytes > 0 && s.fileSize > 0 && s.fileSize + line.size() > s.options.maxFileBytes)
        rotate(s);
    if (!s.file.isOpen()) return;
    if (s.file.write(line) == line.size() && s.file.flush()) s.fileSize += line.size();
}

void handleMessage(QtMsgType type, const QMessageLogContext& context, const QString& text) {
    Sink& s = sink();
    const QString category = shortCategory(context.category);
    QMutexLocker lock(&s.mutex);
    const QByteArray stamped = operator_log::formatLine(type, context.category, text).toUtf8() + kLineEnd;
    const QByteArray forStandardError =
        s.journal ? QByteArray(journalPriority(type)) + category.toUtf8() + ": " + text.toUtf8() + "\n"
                  : stamped;
    std::fwrite(forStandardError.constData(), 1, static_cast<size_t>(forStandardError.size()), stderr);
    std::fflush(stderr);
    writeFileLine(s, stamped);
}

} // namespace

std::optional<LogLevel> logLevelNamed(const QString& word) {
    const QString w = word.trimmed().toLower();
    if (w == "error") return LogLevel::Error;
    if (w == "warning") return LogLevel::Warning;
    if (w == "info") return LogLevel::Info;
    if (w == "debug") return LogLevel::Debug;
    return std::nullopt;
}

const char* logLevelName(LogLevel level) {
    switch (level) {
    case LogLevel::Error:
        return "error";
    case LogLevel::Warning:
        return "warning";
    case LogLevel::Info:
        return "info";
    case LogLevel::Debug:
        return "debug";
    }
    return "info";
}

namespace operator_log {

void install(const OperatorLogOptions& options) {
    Sink& s = sink();
    {
        QMutexLocker lock(&s.mutex);
        s.journal = standardErrorIsJournal();
    }
    qInstallMessageHandler(handleMessage);
    apply(options);
}

void apply(const OperatorLogOptions& options) {
    Sink& s = sink();
    {
        QMutexLocker lock(&s.mutex);
        const bool fileChanged = options.file != s.options.file || !s.file.isOpen();
        s.options = options;
        if (fileChanged) openFile(s);
    }
    enabledLevel.store(static_cast<int>(options.level));
    // Installing the filter again applies it to every category there is.
    QLoggingCategory::CategoryFilter previous = QLoggingCategory::installFilter(filterCategories);
    if (previous != filterCategories) previousFilter = previous;
}

void reopenFile() {
    Sink& s = sink();
    QMutexLocker lock(&s.mutex);
    openFile(s);
}

void tellFileError() {
    QString file;
    QString error;
    {
        Sink& s = sink();
        QMutexLocker lock(&s.mutex);
        file = s.options.file;
        error = s.fileError;
    }
    if (!error.isEmpty())
        qCWarning(lcRun, "the log file %s cannot be written (%s): the log goes to standard error only",
                  qUtf8Printable(file), qUtf8Printable(error));
}

QString formatLine(QtMsgType type, const char* category, const QString& text) {
    return QDateTime::currentDateTime().toString("yyyy-MM-dd hh:mm:ss") + " " +
           QString(typeWord(type)).leftJustified(7) + " " + shortCategory(category) + ": " + text;
}

} // namespace operator_log
