#include "relay/AiSpyLink.h"

#include "basics/OperatorLog.h"
#include "net/Framing.h"
#include "net/PeerAddress.h"
#include "relay/AiSpyText.h"
#include "relay/AwacsClients.h"

#include <algorithm>

AiSpyLink::AiSpyLink(AwacsClients& awacs, RunLogs logs, StatusDisplay& display)
    : awacs_(awacs), logs_(logs), display_(display) {
    QObject::connect(&listener_, &Listener::connectionRequest, &listener_,
                     [this](qintptr id) { accept(id); });
    QObject::connect(&connection_, &SocketElement::dataArrival, &connection_,
                     [this](int, qint64) { serveArrival(); });
    QObject::connect(&connection_, &SocketElement::closed, &connection_, [this](int) { onClosed(); });
    QObject::connect(&connection_, &SocketElement::error, &connection_,
                     [this](int, int, const QString& description) { onFailed(description); });
    grace_.setSingleShot(true);
    QObject::connect(&grace_, &QTimer::timeout, &connection_, [this] {
        if (!gate_ || connection_.state() != SocketElement::Connected || connection_.registered()) return;
        letGo(QString("sent no record within %1 s").arg(gate_->settings().idleGraceSeconds), Refusal::Idle);
    });
}

void AiSpyLink::guard(AccessGate& gate) {
    gate_ = &gate;
    QObject::connect(&gate, &AccessGate::changed, &connection_, [this] { armGrace(); });
}

// One AI Spy at a time: a second one that connects while the first is up gets no answer.
void AiSpyLink::accept(qintptr requestId) {
    const QHostAddress address = peerAddressOf(requestId);
    if (gate_ && !gate_->admits(PortRole::AiSpy, address, "AI Spy")) return;
    ErrorTrap trap(logs_.errors, "WS5_ConnectionRequest");
    if (connection_.state() == SocketElement::Connected) {
        const QString line =
            "AI Spy connection from " + address.toString() + " refused: the AI Spy link is in use";
        if (gate_)
            gate_->refuse(PortRole::AiSpy, Refusal::Busy, address, line);
        else
            qCInfo(lcAccess).noquote() << line;
        return;
    }
    if (connection_.state() != SocketElement::Closed) connection_.close();
    ConnectionTerms terms;
    if (gate_) terms.silenceLimitSeconds = gate_->settings().silenceLimitSeconds;
    if (trap([&] {
            connection_.accept(requestId, terms);
            listener_.take(requestId);
        }))
        qCInfo(lcPeers, "AI Spy link up (%s)", qUtf8Printable(connection_.peerAddress()));
    display_.showAiSpyState(true);
    armGrace();
}

// Until its first update, a link is held by whoever connected first: a silent one goes after the
// grace, so nobody can keep the squadron's AI Spy out by connecting and saying nothing.
void AiSpyLink::armGrace() {
    const int grace = gate_ ? gate_->settings().idleGraceSeconds : 0;
    if (grace <= 0 || connection_.state() != SocketElement::Connected || connection_.registered()) {
        grace_.stop();
        return;
    }
    grace_.start(static_cast<int>(
        std::clamp<qint64>(grace * 1000LL - connection_.msSinceAccepted(), 0, grace * 1000LL)));
}

void AiSpyLink::letGo(const QString& why, Refusal counted) {
    if (connection_.state() == SocketElement::Closed) return;
    if (gate_) gate_->count(PortRole::AiSpy, counted);
    qCInfo(lcAccess, "AI Spy link (%s) let go: %s", qUtf8Printable(connection_.peerAddress()),
           qUtf8Printable(why));
    connection_.close();
    grace_.stop();
    display_.showAiSpyState(false);
}

void AiSpyLink::serveArrival() {
    ErrorTrap trap(logs_.errors, "WS4_DataArrival");
    const std::string_view data = connection_.readWhole();
    MessageList messages;
    {
        ErrorTrap parseTrap(logs_.errors, "ParseData4");
        messages = splitAiArrival(data, parseTrap);
    }
    for (int i = 1; i <= messages.ubound(); ++i)
        if (messages[i].command == "AIUPDT") {
            if (!connection_.registered()) {
                connection_.setRegistered();
                grace_.stop();
            }
            awacs_.relayAiTraffic(aiTrafficText(messages[i].data, logs_.errors));
        }
}

void AiSpyLink::onClosed() {
    qCInfo(lcPeers, "AI Spy link down (%s): closed by the peer", qUtf8Printable(connection_.peerAddress()));
    grace_.stop();
    display_.showAiSpyState(false);
}

void AiSpyLink::onFailed(const QString& description) {
    qCInfo(lcPeers, "AI Spy link down (%s): failed (%s)", qUtf8Printable(connection_.peerAddress()),
           qUtf8Printable(description));
    grace_.stop();
    display_.showAiSpyState(false);
    if (connection_.state() != SocketElement::Closed) connection_.close();
}

void AiSpyLink::send(std::string_view command, std::string_view data) {
    ErrorTrap trap(logs_.errors, "SendCommand4");
    trap([&] {
        if (connection_.state() == SocketElement::Connected) connection_.send(command, data);
    });
    if (logs_.on()) logs_.write(trafficLine("Command sent to AIProcess ", "", command, data));
}
