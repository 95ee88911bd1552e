#pragma once
// The AI Spy link (port 5554): one connection at a time, its updates converted and relayed to
// every AWACS client as "AILOCA".
#include "basics/OperatorLog.h"
#include "basics/RepeatSummary.h"
#include "basics/RunLogs.h"
#include "basics/StatusDisplay.h"
#include "net/Listener.h"
#include "net/SocketElement.h"

#include <QtGlobal>

#include <string_view>

class AwacsClients;

class AiSpyLink {
  public:
    AiSpyLink(AwacsClients& awacs, RunLogs logs, StatusDisplay& display);

    void listen(const QHostAddress& address, quint16 port) { listener_.listen(address, port, "AI Spy"); }
    void closeListener() { listener_.close(); }
    quint16 port() const { return listener_.port(); }

    // One message to the AI Spy, sent only while it is connected, logged either way.
    void send(std::string_view command, std::string_view data);
    // Writes what the connection has queued; true while some of it is still waiting.
    bool writeOut() { return connection_.writeOut(); }

    SocketElement& connection() { return connection_; }

  private:
    void accept(qintptr requestId);
    void serveArrival();
    void onClosed();
    void onFailed(const QString& description);

    AwacsClients& awacs_;
    RunLogs logs_;
    StatusDisplay& display_;
    SocketElement connection_{0};
    Listener listener_;
    RepeatSummary refusals_{lcAccess};
};
