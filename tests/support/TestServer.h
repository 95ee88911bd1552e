#pragma once
// A real server object in a temporary program directory, listening on free loopback ports.
// Writing the error log does not end the test process: it is counted instead.
#include "server/Server.h"
#include "support/RecordingDisplay.h"

#include <QStringList>
#include <QTemporaryDir>

#include <memory>
#include <string>
#include <utility>
#include <vector>

// tessark.ini with no setups, logging off or on.
inline const std::string kIniLogOff = "[SETUPLIST]\r\nNUM=0\r\n[DEBUG]\r\nLOG=0\r\n";
inline const std::string kIniLogOn = "[SETUPLIST]\r\nNUM=0\r\n[DEBUG]\r\nLOG=1\r\n";
// tessark.ini's list of these setup files, as the server writes it.
std::string setupListIni(const QStringList& paths);

class TestServer {
  public:
    // iniText: the content of tessark.ini before start ("" = no file, a first start);
    // settingsText: the content of tessark-server.conf, read as --config reads it ("" = none,
    // the defaults).
    explicit TestServer(const std::string& iniText = {}, bool start = true,
                        const std::string& settingsText = {});
    ~TestServer();

    void start();
    Server& server() { return *server_; }
    RecordingDisplay& display() { return display_; }
    const QString& dir() const { return dirPath_; }
    QString path(const QString& name) const { return dirPath_ + name; }
    // Writes a file into the program directory (CR LF line ends are the caller's choice).
    void writeFile(const QString& name, const std::string& content) const;
    std::string readFile(const QString& name) const;
    // tessark.ini's list of these setup files of the program directory.
    std::string setupList(const std::vector<QString>& names) const;
    // Writes the setup files and a tessark.ini listing them, followed by `more` (a [DEBUG]
    // section, say); a server that has started reads the list again.
    void catalogue(const std::vector<std::pair<QString, std::string>>& setups, const std::string& more = {});
    int endsOfProgram() const { return ended_; }

    quint16 playerPort() const { return server_->ports().players; }
    quint16 awacsPort() const { return server_->ports().awacs; }
    quint16 simPort() const { return server_->ports().sims; }
    quint16 aiSpyPort() const { return server_->ports().aiSpy; }

  private:
    QTemporaryDir tmp_;
    QString dirPath_;
    RecordingDisplay display_;
    std::unique_ptr<Server> server_;
    bool started_ = false;
    int ended_ = 0;
};
