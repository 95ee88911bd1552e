#pragma once
// A Falcon 4 installation of the test's own in a Wine prefix (Linux): system.reg names
// C:\Falcon4 and a theater, WINEPREFIX points at it for the test's life, and the files are
// written under drive_c/Falcon4.
#include "support/Files.h"

#include <QTemporaryDir>

class FakeInstallation {
  public:
    explicit FakeInstallation(const QByteArray& theater = "Korea KTO")
        : hadPrefix_(qEnvironmentVariableIsSet("WINEPREFIX")), savedPrefix_(qgetenv("WINEPREFIX")) {
        qputenv("WINEPREFIX", prefix_.path().toUtf8());
        setTheater(theater);
    }
    ~FakeInstallation() {
        if (hadPrefix_)
            qputenv("WINEPREFIX", savedPrefix_);
        else
            qunsetenv("WINEPREFIX");
    }
    FakeInstallation(const FakeInstallation&) = delete;
    FakeInstallation& operator=(const FakeInstallation&) = delete;

    void setTheater(const QByteArray& theater) {
        writeFile(prefix_.filePath("system.reg"),
                  "WINE REGISTRY Version 2\n\n[Software\\\\Wow6432Node\\\\Microprose\\\\Falcon\\\\4.0] "
                  "1700000000\n\"baseDir\"=\"C:\\\\Falcon4\"\n\"curTheater\"=\"" +
                      theater + "\"\n");
    }
    // Writes a file of the installation; returns its local path.
    QString install(const QString& relative, const QByteArray& content) const {
        return writeFile(dir() + "/" + relative, content);
    }
    QString dir() const { return prefix_.path() + "/drive_c/Falcon4"; }
    QString prefix() const { return prefix_.path(); }
    QString prefixPath(const QString& relative) const { return prefix_.filePath(relative); }

  private:
    QTemporaryDir prefix_;
    bool hadPrefix_;
    QByteArray savedPrefix_;
};
