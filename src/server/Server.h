#pragma once
// The run: one non-visual object that owns the sockets, the keep-alive timer, the logs and
// the components that own the lists, and routes every socket event. Everything happens on
// the one thread of the event loop, each event to its end before the next.
#include "net/Listener.h"
#include "net/Senders.h"
#include "net/SocketArray.h"
#include "net/SocketElement.h"
#include "server/ErrorLog.h"
#include "server/StatusDisplay.h"
#include "server/TrafficLog.h"

#include <QObject>
#include <QTimer>

#include <memory>
#include <string_view>

class PlayerSessions;
class AwacsClients;
class SimClients;
class AiSpyLink;
class SetupCatalogue;
struct CommandRec;

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

    // Start-up from the tray icon on: program files, lists, configuration, logs, setups and
    // the four listeners. Throws RuntimeError when a port cannot be had.
    void start();
    // The 10-second keep-alive.
    void Timer1_Timer();
    // Close request: from the window's close box it only hides (returns false); any other
    // close tells the AI Spy "CLOSE1", lets pending events run once, and returns true.
    bool queryUnload(bool fromCloseBox);
    // What runs after a close was allowed: tray, listeners, "DISCON" to every peer, logs.
    void unload();
    // "Exit" from either menu, or a signal: close request by code, then unload; then finished().
    void exit();

    void WriteLog(std::string_view text);
    bool logOn() const { return errorLog_->enabled(); }
    // One "Command arrived from <label><index>: (<command>)<data>" line, when logging is on.
    void logArrival(std::string_view label, int index, const CommandRec& command);

    ErrorLog& errorLog() { return *errorLog_; }
    StatusDisplay& display() { return display_; }
    Senders& senders() { return senders_; }
    TrafficLog& trafficLog() { return trafficLog_; }
    const QString& appDir() const { return appDir_; }
    const QString& iniFile() const { return iniFile_; }

    SocketArray& WS1() { return ws1_; }
    SocketArray& WS2() { return ws2_; }
    SocketArray& WS3() { return ws3_; }
    SocketElement& WS4() { return ws4_; }
    Listener& WS5() { return ws5_; }

    PlayerSessions& players() { return *players_; }
    AwacsClients& awacs() { return *awacs_; }
    SimClients& sims() { return *sims_; }
    AiSpyLink& aiSpy() { return *aiSpy_; }
    SetupCatalogue& setups() { return *setups_; }

    // Ports actually listened on (tests start the server on any free port).
    Ports ports() const;
    QTimer& keepAliveTimer() { return timer1_; }

    // Writes out what every connection, open or closed, has queued, all of them at once within
    // one budget (before the process ends).
    void flushAllSockets(int budgetMs);

  signals:
    void finished();

  private:
    void endProgramNow();

    StatusDisplay& display_;
    QString appDir_;
    QString iniFile_;
    Ports requestedPorts_;
    std::unique_ptr<ErrorLog> errorLog_;
    ErrorLog::EndProgram endProgram_;
    TrafficLog trafficLog_;
    SocketArray ws1_, ws2_, ws3_;
    SocketElement ws4_;
    Listener ws5_;
    QTimer timer1_;
    Senders senders_;
    std::unique_ptr<PlayerSessions> players_;
    std::unique_ptr<AwacsClients> awacs_;
    std::unique_ptr<SimClients> sims_;
    std::unique_ptr<AiSpyLink> aiSpy_;
    std::unique_ptr<SetupCatalogue> setups_;
    bool unloaded_ = false;
    bool exiting_ = false;
};
