#include "server/Server.h"

#include "basics/ErrorTrap.h"
#include "basics/IniFile.h"
#include "basics/OperatorLog.h"
#include "basics/Timestamp.h"
#include "players/PlayerSessions.h"
#include "relay/AiSpyLink.h"
#include "relay/AwacsClients.h"
#include "relay/SimClients.h"
#include "server/AccessControl.h"
#include "server/ControlChannel.h"
#include "setups/SetupCatalogue.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QFile>
#include <QThread>

#include <cstdlib>

namespace {
constexpr int kKeepAliveMs = 10000;
constexpr int kShutdownFlushMs = 2000;
} // namespace

Server::Server(StatusDisplay& display, QString appDir, Ports ports, ErrorLog::EndProgram endProgram)
    : display_(display), appDir_(std::move(appDir)), iniFile_(appDir_ + "tessark.ini"),
      requestedPorts_(ports), endProgram_(std::move(endProgram)),
      errorLog_(
          appDir_ + "TessarkSrvErrorLog.txt", false, [this] { endProgramNow(); },
          [this](const RuntimeError& e) {
              display_.messageBox(QString::fromStdString(runTimeErrorText(e)), kProgramTitle,
                                  MessageIcon::Critical);
          }) {
    playerChannel_ = std::make_unique<SlotChannel>(PlayerSessions::channelNames(), logs_, playerNumbers_);
    awacsChannel_ = std::make_unique<SlotChannel>(AwacsClients::channelNames(), logs_);
    simChannel_ = std::make_unique<SlotChannel>(SimClients::channelNames(), logs_);

    setups_ = std::make_unique<SetupCatalogue>(iniFile_, errorLog_, display_);
    awacs_ = std::make_unique<AwacsClients>(*awacsChannel_, logs_, display_);
    sims_ = std::make_unique<SimClients>(*simChannel_, playerNumbers_, *awacs_, logs_, display_);
    players_ = std::make_unique<PlayerSessions>(*playerChannel_, *awacs_, *setups_, logs_, display_);
    aiSpy_ = std::make_unique<AiSpyLink>(*awacs_, logs_, display_);
    awacs_->connect({players_.get(), sims_.get()}, *players_);
    sims_->connect(*players_);
    control_ = std::make_unique<ControlChannel>(*this);
    access_ = std::make_unique<AccessControl>(*this);
    playerChannel_->guard(access_->gate(), PortRole::Players);
    awacsChannel_->guard(access_->gate(), PortRole::Awacs);
    simChannel_->guard(access_->gate(), PortRole::Sims);
    aiSpy_->guard(access_->gate());

    keepAlive_.setInterval(kKeepAliveMs);
    connect(&keepAlive_, &QTimer::timeout, this, &Server::sendKeepAlive);
}

Server::~Server() = default;

QString Server::title() {
    return QStringLiteral("QUILLON v%1.%2.%3b")
        .arg(TESSARK_VERSION_MAJOR)
        .arg(TESSARK_VERSION_MINOR)
        .arg(TESSARK_VERSION_PATCH);
}

void Server::useSettings(const QString& path, bool required, const SettingsReading& reading) {
    settingsPath_ = path;
    settingsRead_ = reading;
    settingsRequired_ = required;
    settings_ = reading.settings;
}

void Server::start() {
    startedAt_ = QDateTime::currentDateTime();
    qCInfo(lcRun, "Tessark Server %d.%d.%d starting in %s", TESSARK_VERSION_MAJOR, TESSARK_VERSION_MINOR,
           TESSARK_VERSION_PATCH, qUtf8Printable(appDir_));
    if (settingsRead_.path.isEmpty())
        qCInfo(lcRun, "settings: no %s, the defaults serve",
               qUtf8Printable(settingsPath_.isEmpty() ? QString(kSettingsFileName) : settingsPath_));
    else
        qCInfo(lcRun, "settings read from %s", qUtf8Printable(settingsRead_.path));

    // The lists start with their one unused element 0.
    players_->reset();
    awacs_->reset();
    sims_->reset();
    setups_->reset();
    display_.showAwacsCount(QString::number(awacs_->listed().ubound()));
    display_.showSimCount(QString::number(sims_->simulators().ubound()));

    setups_->setLimits(settings_.files);
    bool logOn = false;
    if (!QFile::exists(iniFile_)) {
        try {
            replaceIni({{"SETUPLIST", "NUM", "0"}, {"DEBUG", "LOG", "0"}}, iniFile_);
        } catch (const RuntimeError& e) {
            qCCritical(lcRun, "%s cannot be created: %s", qUtf8Printable(iniFile_), e.what());
            throw;
        }
    } else {
        setups_->readList();
        try {
            logOn = readIni("DEBUG", "LOG", iniFile_, settings_.files.iniFileBytes) == "1";
        } catch (const RuntimeError&) {
            // Too large to read (the catalogue has said so): no switch in it is taken.
        }
    }
    errorLog_.setEnabled(logOn);
    if (logOn) {
        qCInfo(lcRun,
               "logging is on (LOG=1): traffic to %sTessarkSrvLog.txt, the first run-time error to "
               "%s ends the server",
               qUtf8Printable(appDir_), qUtf8Printable(errorLog_.path()));
        if (!trafficLog_.open(appDir_ + "TessarkSrvLog.txt")) {
            qCCritical(lcRun, "the traffic log %sTessarkSrvLog.txt cannot be opened",
                       qUtf8Printable(appDir_));
            throw RuntimeError(75, "Path/File access error");
        }
    }

    setups_->loadFiles();
    access_->apply();

    playerChannel_->listen(settings_.listenPoint(PortRole::Players).address, requestedPorts_.players);
    awacsChannel_->listen(settings_.listenPoint(PortRole::Awacs).address, requestedPorts_.awacs);
    simChannel_->listen(settings_.listenPoint(PortRole::Sims).address, requestedPorts_.sims);
    aiSpy_->listen(settings_.listenPoint(PortRole::AiSpy).address, requestedPorts_.aiSpy);
    keepAlive_.start();
    // Without it the server still serves its ports; only the command line cannot reach it.
    if (!control_->listen()) {
        qCWarning(lcRun, "the control channel is in use by another server: status, exit and setups "
                         "commands cannot reach this one");
        display_.messageBox("The control channel is in use by another server.", kProgramTitle,
                            MessageIcon::Information);
    }
    qCInfo(lcRun, "ready");
}

QStringList Server::reload(const QString& why) {
    QStringList errors;
    // A log file moved away (logrotate) is reopened first, so that this reload is told in the new one.
    operator_log::reopenFile();
    qCInfo(lcRun, "reloading (%s)", qUtf8Printable(why));
    operator_log::tellFileError();
    if (!settingsPath_.isEmpty()) {
        const SettingsReading reading = readServerSettings(settingsPath_, settingsRequired_, appDir_);
        if (!reading.tell()) {
            qCWarning(lcRun, "the settings were not changed");
            errors = reading.errors;
        } else {
            for (const QString& kept : settingsNeedingRestart(settings_, reading.settings))
                qCWarning(lcRun, "changed %s", qUtf8Printable(kept));
            const auto listen = settings_.listen;
            settings_ = reading.settings;
            settings_.listen = listen;
            settingsRead_ = reading;
            setups_->setLimits(settings_.files);
            emit settingsChanged(settings_);
            operator_log::tellFileError();
        }
    }
    // The ban file is read again whether or not the settings changed: an operator's edit of it
    // takes effect here.
    access_->apply();
    setups_->reload();
    return errors;
}

void Server::sendKeepAlive() {
    players_->sendToEveryPlayer("SYNCRO", "");
    awacs_->sendToAwacs("SYNCRO", "");
    sims_->sendToEverySim("SYNCRO", "");
    aiSpy_->send("SYNCRO", "");
}

bool Server::queryUnload(bool fromCloseBox) {
    if (fromCloseBox) return false; // the window only hides; the server keeps running
    aiSpy_->send("CLOSE1", "");
    QCoreApplication::processEvents();
    return true;
}

void Server::unload() {
    if (unloaded_) return;
    unloaded_ = true;
    keepAlive_.stop();
    display_.removeTrayIcon();
    control_->close();
    for (SlotChannel* channel : slotChannels())
        channel->closeListener();

    // Every peer is told and let go at once, in index order, without waiting on any of them:
    // nothing runs between the sends, so no peer's event can change the lists underneath.
    {
        ErrorTrap trap(errorLog_, "Form_Unload");
        for (SlotChannel* channel : slotChannels())
            channel->disconnectAll(trap);
    }
    // Then they all get their last messages together, within one budget for the lot, so a peer
    // that does not read costs the others nothing.
    flushAllSockets(kShutdownFlushMs);

    display_.unloadOtherForms();
    if (logOn()) trafficLog_.close();
}

void Server::exit(const QString& why) {
    // A second request (another signal, Exit while shutting down) finds the work done or under way.
    if (exiting_) return;
    exiting_ = true;
    qCInfo(lcRun, "shutting down (%s)", qUtf8Printable(why));
    if (!queryUnload(false)) return;
    unload();
    qCInfo(lcRun, "stopped");
    emit finished();
}

std::array<SlotChannel*, 3> Server::slotChannels() const {
    return {playerChannel_.get(), awacsChannel_.get(), simChannel_.get()};
}

QMap<QString, qint64> Server::refusalCounts() const {
    return access_->gate().counts();
}

Ports Server::ports() const {
    return {playerChannel_->port(), awacsChannel_->port(), simChannel_->port(), aiSpy_->port()};
}

void Server::flushAllSockets(int budgetMs) {
    QDeadlineTimer budget(budgetMs);
    for (;;) {
        bool pending = aiSpy_->writeOut();
        for (SlotChannel* channel : slotChannels())
            pending = channel->writeOut() || pending;
        pending = SocketElement::writeOutClosed() || pending;
        if (!pending || budget.hasExpired()) break;
        QThread::msleep(2);
    }
}

void Server::endProgramNow() {
    if (endProgram_) {
        endProgram_();
        return;
    }
    // Ends like an explicit end statement: no unload, no "DISCON"; what was already sent
    // still reaches the peers, and what was logged is kept.
    flushAllSockets(1000);
    trafficLog_.flush();
    std::_Exit(1);
}
