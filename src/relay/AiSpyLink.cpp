#include "relay/AiSpyLink.h"

#include "net/Framing.h"
#include "relay/AiSpyText.h"
#include "relay/AwacsClients.h"
#include "server/Server.h"

AiSpyLink::AiSpyLink(Server& server) : server_(server) {}

// One AI Spy at a time: a second one that connects while the first is up gets no answer.
void AiSpyLink::WS5_ConnectionRequest(qintptr requestId) {
    ErrorTrap trap(server_.errorLog(), "WS5_ConnectionRequest");
    SocketElement& ws4 = server_.WS4();
    if (ws4.state() == SocketElement::Connected) return;
    if (ws4.state() != SocketElement::Closed) ws4.close();
    trap([&] {
        ws4.accept(requestId);
        server_.WS5().take(requestId);
    });
    server_.display().showAiSpyState(true);
}

void AiSpyLink::WS4_DataArrival() {
    ErrorTrap trap(server_.errorLog(), "WS4_DataArrival");
    const std::string_view data = server_.WS4().readWhole();
    CommandList commands;
    {
        ErrorTrap parseTrap(server_.errorLog(), "ParseData4");
        commands = splitAiArrival(data, parseTrap);
    }
    for (int i = 1; i <= commands.ubound(); ++i)
        if (commands[i].Command == "AIUPDT")
            server_.awacs().SendToAwacsClients4(AISPYTxtToAWACSTxt(commands[i].Data, server_.errorLog()));
}

void AiSpyLink::WS4_Close() {
    server_.display().showAiSpyState(false);
}

void AiSpyLink::WS4_Error() {
    server_.display().showAiSpyState(false);
    if (server_.WS4().state() != SocketElement::Closed) server_.WS4().close();
}
