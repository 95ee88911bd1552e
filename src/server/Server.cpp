#include "server/Server.h"

#include "net/CommandRec.h"
#include "players/PlayerSessions.h"
#include "relay/AiSpyLink.h"
#include "relay/AwacsClients.h"
#include "relay/SimClients.h"
#include "server/ErrorTrap.h"
#include "server/IniFile.h"
#include "server/Timestamp.h"
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
      requestedPorts_(ports), endProgram_(std::move(endProgram)), ws4_(0), senders_(*this) {
    errorLog_ = std::make_unique<ErrorLog>(
        appDir_ + "TessarkSrvErrorLog.txt", false, [this] { endProgramNow(); },
        [this](const RuntimeError& e) {
            display_.messageBox(QString::fromStdString(runTimeErrorText(e)), kProgramTitle,
                                MessageIcon::Critical);
        });
    players_ = std::make_unique<PlayerSessions>(*this);
    awacs_ = std::make_unique<AwacsClients>(*this);
    sims_ = std::make_unique<SimClients>(*this);
    aiSpy_ = std::make_unique<AiSpyLink>(*this);
    setups_ = std::make_unique<SetupCatalogue>(*this);

    timer1_.setInterval(kKeepAliveMs);
    connect(&timer1_, &QTimer::timeout, this, &Server::Timer1_Timer);

    connect(&ws1_, &SocketArray::connectionRequest, this,
            [this](int i, qintptr id) { players_->WS1_ConnectionRequest(i, id); });
    connect(&ws1_, &SocketArray::dataArrival, this, [this](int i, qint64) { players_->WS1_DataArrival(i); });
    connect(&ws1_, &SocketArray::closed, this, [this](int i) { players_->WS1_Close(i); });
    connect(&ws1_, &SocketArray::error, this, [this](int i, int, const QString&) { players_->WS1_Error(i); });
    connect(&ws1_, &SocketArray::drained, this, [this](int i) { players_->WS1_Drained(i); });

    connect(&ws2_, &SocketArray::connectionRequest, this,
            [this](int i, qintptr id) { awacs_->WS2_ConnectionRequest(i, id); });
    connect(&ws2_, &SocketArray::dataArrival, this, [this](int i, qint64) { awacs_->WS2_DataArrival(i); });
    connect(&ws2_, &SocketArray::closed, this, [this](int i) { awacs_->WS2_Close(i); });
    connect(&ws2_, &SocketArray::error, this, [this](int i, int, const QString&) { awacs_->WS2_Error(i); });
    connect(&ws2_, &SocketArray::drained, this, [this](int i) { awacs_->WS2_Drained(i); });

    connect(&ws3_, &SocketArray::connectionRequest, this,
            [this](int i, qintptr id) { sims_->WS3_ConnectionRequest(i, id); });
    connect(&ws3_, &SocketArray::dataArrival, this, [this](int i, qint64) { sims_->WS3_DataArrival(i); });
    connect(&ws3_, &SocketArray::closed, this, [this](int i) { sims_->WS3_Close(i); });
    connect(&ws3_, &SocketArray::error, this, [this](int i, int, const QString&) { sims_->WS3_Error(i); });
    connect(&ws3_, &SocketArray::drained, this, [this](int i) { sims_->WS3_Drained(i); });

    connect(&ws5_, &Listener::connectionRequest, this,
            [this](qintptr id) { aiSpy_->WS5_ConnectionRequest(id); });
    connect(&ws4_, &SocketElement::dataArrival, this, [this](int, qint64) { aiSpy_->WS4_DataArrival(); });
    connect(&ws4_, &SocketElement::closed, this, [this](int) { aiSpy_->WS4_Close(); });
    connect(&ws4_, &SocketElement::error, this, [this](int, int, const QString&) { aiSpy_->WS4_Error(); });
}

Server::~Server() = default;

QString Server::title() {
    return QStringLiteral("QUILLON v%1.%2.%3b")
        .arg(TESSARK_VERSION_MAJOR)
        .arg(TESSARK_VERSION_MINOR)
        .arg(TESSARK_VERSION_PATCH);
}

void Server::start() {
    // The lists start with their one unused element 0.
    players_->reset();
    awacs_->reset();
    sims_->reset();
    setups_->reset();
    display_.showAwacsCount(QString::number(awacs_->AwacsList().ubound()));
    display_.showSimCount(QString::number(sims_->SimList().ubound()));

    bool logOn = false;
    if (!QFile::exists(iniFile_)) {
        QFile created(iniFile_);
        if (!created.open(QIODevice::WriteOnly)) throw RuntimeError(75, "Path/File access error");
        created.close();
        WriteINI("SETUPLIST", "NUM", "0", iniFile_);
        WriteINI("DEBUG", "LOG", "0", iniFile_);
    } else {
        setups_->InitSetups();
        logOn = ReadINI("DEBUG", "LOG", iniFile_) == "1";
    }
    errorLog_->setEnabled(logOn);
    if (logOn && !trafficLog_.open(appDir_ + "TessarkSrvLog.txt"))
        throw RuntimeError(75, "Path/File access error");

    setups_->LoadSetups();

    ws1_.listen(requestedPorts_.players);
    ws2_.listen(requestedPorts_.awacs);
    ws3_.listen(requestedPorts_.sims);
    ws5_.listen(requestedPorts_.aiSpy);
    timer1_.start();
}

void Server::Timer1_Timer() {
    ErrorTrap trap(*errorLog_, "Timer1_Timer");
    players_->toEveryPlayer("SYNCRO", "", trap);
    awacs_->toEveryClient("SYNCRO", "", trap);
    const auto& sims = sims_->SimList();
    for (int i = 1; i <= sims.ubound(); ++i)
        trap([&] { senders_.SendCommand3("SYNCRO", "", sims[i].Slot); });
    senders_.SendCommand4("SYNCRO", "");
}

bool Server::queryUnload(bool fromCloseBox) {
    if (fromCloseBox) return false; // the window only hides; the server keeps running
    senders_.SendCommand4("CLOSE1", "");
    QCoreApplication::processEvents();
    return true;
}

void Server::unload() {
    if (unloaded_) return;
    unloaded_ = true;
    timer1_.stop();
    display_.removeTrayIcon();
    ws1_.closeListener();
    ws2_.closeListener();
    ws3_.closeListener();

    // Every peer is told and let go at once, in index order, without waiting on any of them:
    // nothing runs between the sends, so no peer's event can change the lists underneath.
    {
        ErrorTrap trap(*errorLog_, "Form_Unload");
        auto disconnectAll = [&](SocketArray& sockets,
                                 void (Senders::*send)(std::string_view, std::string_view, int16_t)) {
            for (int index : sockets.loadedIndices()) {
                trap([&] {
                    if (sockets.state(index) == SocketElement::Connected)
                        (senders_.*send)("DISCON", "", static_cast<int16_t>(index));
                });
                trap([&] { sockets.close(index); });
                trap([&] { sockets.unload(index); });
            }
        };
        disconnectAll(ws1_, &Senders::SendCommand);
        disconnectAll(ws2_, &Senders::SendCommand2);
        disconnectAll(ws3_, &Senders::SendCommand3);
    }
    // Then they all get their last messages together, within one budget for the lot, so a peer
    // that does not read costs the others nothing.
    flushAllSockets(kShutdownFlushMs);

    display_.unloadOtherForms();
    if (logOn()) trafficLog_.close();
}

void Server::exit() {
    // A second request (another signal, Exit while shutting down) finds the work done or under way.
    if (exiting_) return;
    exiting_ = true;
    if (!queryUnload(false)) return;
    unload();
    emit finished();
}

void Server::WriteLog(std::string_view text) {
    if (logOn()) trafficLog_.writeLine(text);
}

void Server::logArrival(std::string_view label, int index, const CommandRec& command) {
    if (logOn()) WriteLog(trafficLine(label, std::to_string(index), command.Command, command.Data));
}

Ports Server::ports() const {
    return {ws1_.port(), ws2_.port(), ws3_.port(), ws5_.port()};
}

void Server::flushAllSockets(int budgetMs) {
    QDeadlineTimer budget(budgetMs);
    for (;;) {
        bool pending = ws4_.writeOut();
        for (SocketArray* sockets : {&ws1_, &ws2_, &ws3_})
            for (int index : sockets->loadedIndices())
                pending = sockets->element(index).writeOut() || pending;
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
