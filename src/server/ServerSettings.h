#pragma once
// The server's own settings, "tessark-server.conf": where it listens, its operator's log, who
// may connect and the largest files it reads. The operator writes the file; the server reads
// it at start and on reload and never writes it (tessark.ini, which the setup catalogue
// rewrites, holds none of this). Every key has a default that keeps the server as it is
// without the file. An unknown key is a warning; a value that cannot be read is an error that
// names its line.
#include "basics/FileLimits.h"
#include "basics/OperatorLog.h"
#include "net/AccessSettings.h"

#include <QHostAddress>
#include <QString>
#include <QStringList>

// The settings file's name beside tessark.ini, when --config names none.
inline constexpr char kSettingsFileName[] = "tessark-server.conf";

struct ListenPoint {
    QHostAddress address = QHostAddress::Any;
    quint16 port = 0;
    QString text() const; // "0.0.0.0:5555", "[::1]:5556"
};

struct ServerSettings {
    std::array<ListenPoint, 4> listen{{{QHostAddress::Any, 5555},
                                       {QHostAddress::Any, 5556},
                                       {QHostAddress::Any, 5557},
                                       {QHostAddress::Any, 5554}}};
    OperatorLogOptions log;
    AccessSettings access;
    FileLimits files;

    const ListenPoint& listenPoint(PortRole role) const { return listen[static_cast<size_t>(role)]; }
};

struct SettingsReading {
    ServerSettings settings;
    QString path;         // the file read; "" when there was none
    QStringList warnings; // "FILE line N: ..."
    QStringList errors;
    bool ok() const { return errors.isEmpty(); }
    // The warnings and the errors, each a line of the operator's log; ok().
    bool tell() const;
};

// Reads the settings at `path`. A missing file is no error unless it was named by the operator
// (`required`); then, and for a file that cannot be read, it is. Relative file names in the
// settings (the log file, the ban file) are taken relative to `programDir`.
SettingsReading readServerSettings(const QString& path, bool required, const QString& programDir);

// What a reload may change while the server runs; the listeners keep their addresses until the
// next start (a warning says so).
QStringList settingsNeedingRestart(const ServerSettings& running, const ServerSettings& read);
