#pragma once
// The AI Spy link (port 5554): one connection at a time, its updates converted and relayed to
// every AWACS client as "AILOCA".
#include "basics/RunLogs.h"
#include "basics/StatusDisplay.h"
#include "net/AccessGate.h"
#include "net/Listener.h"
#include "net/SocketElement.h"

#include <QTimer>
#include <QtGlobal>

#include <string_view>

class AwacsClients;

class AiSpyLink {
  public:
    AiSpyLink(AwacsClients& awacs, RunLogs logs, StatusDisplay& display);

    // The operator's rules: bans and the allow list at accept, the grace for the first record,
    // the silence limit.
    void guard(AccessGate& gate);

    void listen(const QHostAddress& address, quint16 port) { listener_.listen(address, port, "AI Spy"); }
    void closeListener() { listener_.close(); }
    quint16 port() const { return listener_.port(); }

    // One message to the AI Spy, sent only while it is connected, logged either way.
    void send(std::string_view command, std::string_view data);
    // Writes what the connection has queued; true while some of it is still waiting.
    bool writeOut() { return connection_.writeOut(); }
    // The server ends the link (a kick, a ban, no record within the grace): the link is free for
    // the next AI Spy. `counted` is the reason the gate counts it under.
    void letGo(const QString& why, Refusal counted);

    SocketElement& connection() { return connection_; }

  private:
    void accept(qintptr requestId);
    void serveArrival();
    void onClosed();
    void onFailed(const QString& description);
    void armGrace();

    AwacsClients& awacs_;
    RunLogs logs_;
    StatusDisplay& display_;
    SocketElement connection_{0};
    Listener listener_;
    AccessGate* gate_ = nullptr;
    QTimer grace_;
};
