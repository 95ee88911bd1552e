#include "relay/AiSpyLink.h"

#include "basics/OperatorLog.h"
#include "net/Framing.h"
#include "net/PeerAddress.h"
#include "relay/AiSpyText.h"
#include "relay/AwacsClients.h"

AiSpyLink::AiSpyLink(AwacsClients& awacs, RunLogs logs, StatusDisplay& display)
    : awacs_(awacs), logs_(logs), display_(display) {
    QObject::connect(&listener_, &Listener::connectionRequest, &listener_,
                     [this](qintptr id) { accept(id); });
    QObject::connect(&connection_, &SocketElement::dataArrival, &connection_,
                     [this](int, qint64) { serveArrival(); });
    QObject::connect(&connection_, &SocketElement::closed, &connection_, [this](int) { onClosed(); });
    QObject::connect(&connection_, &SocketElement::error, &connection_,
                     [this](int, int, const QString& description) { onFailed(description); });
}

// One AI Spy at a time: a second one that connects while the first is up gets no answer.
void AiSpyLink::accept(qintptr requestId) {
    ErrorTrap trap(logs_.errors, "WS5_ConnectionRequest");
    if (connection_.state() == SocketElement::Connected) {
        refusals_.note("AI Spy connections refused", "AI Spy connection from " +
                                                         peerAddressOf(requestId).toString() +
                                                         " refused: the AI Spy link is in use");
        return;
    }
    if (connection_.state() != SocketElement::Closed) connection_.close();
    if (trap([&] {
            connection_.accept(requestId);
            listener_.take(requestId);
        }))
        qCInfo(lcPeers, "AI Spy link up (%s)", qUtf8Printable(connection_.peerAddress()));
    display_.showAiSpyState(true);
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
        if (messages[i].command == "AIUPDT")
            awacs_.relayAiTraffic(aiTrafficText(messages[i].data, logs_.errors));
}

void AiSpyLink::onClosed() {
    qCInfo(lcPeers, "AI Spy link down (%s): closed by the peer", qUtf8Printable(connection_.peerAddress()));
    display_.showAiSpyState(false);
}

void AiSpyLink::onFailed(const QString& description) {
    qCInfo(lcPeers, "AI Spy link down (%s): failed (%s)", qUtf8Printable(connection_.peerAddress()),
           qUtf8Printable(description));
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
