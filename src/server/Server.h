#pragma once
// The run: one non-visual object that owns the sockets, the keep-alive timer, the logs and
// the components that own the lists, and routes every socket event. Everything happens on
// the one thread of the event loop, each event to its end before the next.
#include "basics/ErrorLog.h"
#include "basics/RunLogs.h"
#include "basics/StatusDisplay.h"
#include "basics/TrafficLog.h"
#include "net/SlotChannel.h"
#include "server/ServerSettings.h"

#include <QDateTime>
#include <QMap>
#include <QObject>
#include <QTimer>

#include <array>
#include <memory>

class PlayerSessions;
class AwacsClients;
class SimClients;
class AiSpyLink;
class SetupCatalogue;
class ControlChannel;
class AccessControl;

struct Ports {
    quint16 players = 5555;
    quint16 awacs = 5556;
    quint16 sims = 5557;
    quint16 aiSpy = 5554;
    static Ports anyFree() { return {0, 0, 0, 0}; }
};

class Server : public QObject {
    Q_OBJECT
  public:
    // appDir ends in the directory separator. endProgram is what writing the error log ends
    // with; by default the queued output is flushed and the process exits at once.
    Server(StatusDisplay& display, QString appDir, Ports ports = {}, ErrorLog::EndProgram endProgram = {});
    ~Server() override;

    // "QUILLON v1.1.0b", from the program's version.
    static QString title();

    // The server's own settings as read from `path` (required: named by the operator), before
    // start(); the reading's warnings are told at start and a reload reads the same path
    // again. Without it the defaults serve.
    void useSettings(const QString& path, bool required, const SettingsReading& reading);
    const ServerSettings& settings() const { return settings_; }

    // Start-up from the tray icon on: program files, lists, configuration, logs, setups, the
    // four listeners and the operator's control channel. Throws RuntimeError when a port cannot
    // be had.
    void start();
    // SIGHUP or the reload command: the log file reopened, the settings file and the setup
    // catalogue read again. Settings that do not read keep the running ones (the errors are
    // told); the listeners keep their addresses until the next start.
    // Returns the settings file's errors, if it did not read.
    QStringList reload(const QString& why);
    // Every 10 seconds: "SYNCRO" to every listed player, AWACS client and simulator, and the AI Spy.
    void sendKeepAlive();
    // Close request: from the window's close box it only hides (returns false); any other
    // close tells the AI Spy "CLOSE1", lets pending events run once, and returns true.
    bool queryUnload(bool fromCloseBox);
    // What runs after a close was allowed: tray, listeners, "DISCON" to every peer, logs.
    void unload();
    // "Exit" from either menu, or a signal: close request by code, then unload; then finished().
    // `why` is told on the operator's log.
    void exit(const QString& why = "Exit");

    bool logOn() const { return errorLog_.enabled(); }
    ErrorLog& errorLog() { return errorLog_; }
    TrafficLog& trafficLog() { return trafficLog_; }
    StatusDisplay& display() { return display_; }
    const QString& appDir() const { return appDir_; }
    const QString& iniFile() const { return iniFile_; }

    // Player slots and the simulators' airplane numbers, taken from the same table.
    const SlotTable& playerNumbers() const { return playerNumbers_; }
    SlotChannel& playerChannel() { return *playerChannel_; }
    SlotChannel& awacsChannel() { return *awacsChannel_; }
    SlotChannel& simChannel() { return *simChannel_; }

    PlayerSessions& players() { return *players_; }
    AwacsClients& awacs() { return *awacs_; }
    SimClients& sims() { return *sims_; }
    AiSpyLink& aiSpy() { return *aiSpy_; }
    SetupCatalogue& setups() { return *setups_; }
    // Kicks, bans and who may connect.
    AccessControl& access() { return *access_; }
    // Connections refused at accept, and let go, since the start, by "<port>/<reason>": ports
    // as the settings name them (players, awacs, sims, ai-spy), reasons banned, not-allowed,
    // per-address, full, busy (refused) and idle, kicked (let go); only counts above zero.
    QMap<QString, qint64> refusalCounts() const;

    // Ports actually listened on (tests start the server on any free port).
    Ports ports() const;
    QTimer& keepAliveTimer() { return keepAlive_; }

    // Writes out what every connection, open or closed, has queued, all of them at once within
    // one budget (before the process ends).
    void flushAllSockets(int budgetMs);

    QDateTime startedAt() const { return startedAt_; }

  signals:
    void finished();
    // After a reload read new settings (the operator's log follows them).
    void settingsChanged(const ServerSettings& settings);

  private:
    // Every numbered channel, in the order shutdown tells them.
    std::array<SlotChannel*, 3> slotChannels() const;
    void endProgramNow();

    StatusDisplay& display_;
    QString appDir_;
    QString iniFile_;
    Ports requestedPorts_;
    ServerSettings settings_;
    SettingsReading settingsRead_;
    QString settingsPath_;
    bool settingsRequired_ = false;
    QDateTime startedAt_;
    ErrorLog::EndProgram endProgram_;
    ErrorLog errorLog_;
    TrafficLog trafficLog_;
    RunLogs logs_{errorLog_, trafficLog_};
    QTimer keepAlive_;
    // Player slots; the simulators' airplanes are numbered from the same table.
    SlotTable playerNumbers_{};
    std::unique_ptr<SlotChannel> playerChannel_, awacsChannel_, simChannel_;
    std::unique_ptr<SetupCatalogue> setups_;
    std::unique_ptr<AwacsClients> awacs_;
    std::unique_ptr<SimClients> sims_;
    std::unique_ptr<PlayerSessions> players_;
    std::unique_ptr<AiSpyLink> aiSpy_;
    std::unique_ptr<ControlChannel> control_;
    std::unique_ptr<AccessControl> access_;
    bool unloaded_ = false;
    bool exiting_ = false;
};
