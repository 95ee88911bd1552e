#pragma once
// The AI Spy link (port 5554): one connection at a time on WS4, its updates converted and
// relayed to every AWACS client as "AILOCA".

#include <QtGlobal>

class Server;

class AiSpyLink {
  public:
    explicit AiSpyLink(Server& server);
    void WS5_ConnectionRequest(qintptr requestId);
    void WS4_DataArrival();
    void WS4_Close();
    void WS4_Error();

  private:
    Server& server_;
};
