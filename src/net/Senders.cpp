#include "net/Senders.h"

#include "server/ErrorTrap.h"
#include "server/Server.h"
#include "server/Timestamp.h"

namespace {

void sendOnArray(Server& server, SocketArray& sockets, std::string_view routine, std::string_view label,
                 std::string_view command, std::string_view data, int16_t index) {
    ErrorTrap trap(server.errorLog(), routine);
    // A slot whose connection has gone (answers to the commands after a VALEND, a record left on
    // a closed slot) fails its statement without unwinding: peers can make this happen at will.
    if (!sockets.isLoaded(index))
        trap.raise(errors::elementMissing(index));
    else if (sockets.state(index) == SocketElement::Connected)
        trap([&] { sockets.send(index, command, data); });
    if (server.logOn()) server.WriteLog(trafficLine(label, std::to_string(index), command, data));
}

} // namespace

std::string trafficLine(std::string_view label, std::string_view index, std::string_view command,
                        std::string_view data) {
    std::string line = logTimestamp();
    line += " : ";
    line += label;
    line += index;
    line += ": (";
    line += command;
    line += ')';
    line += data;
    return line;
}

void Senders::SendCommand(std::string_view command, std::string_view data, int16_t index) {
    sendOnArray(server_, server_.WS1(), "SendCommand", "Command sent to Player #", command, data, index);
}

void Senders::SendCommand2(std::string_view command, std::string_view data, int16_t index) {
    sendOnArray(server_, server_.WS2(), "SendCommand2", "Command sent to AWACS Client #", command, data,
                index);
}

void Senders::SendCommand3(std::string_view command, std::string_view data, int16_t index) {
    sendOnArray(server_, server_.WS3(), "SendCommand3", "Command sent to SIM Client #", command, data, index);
}

void Senders::SendCommand4(std::string_view command, std::string_view data) {
    ErrorTrap trap(server_.errorLog(), "SendCommand4");
    SocketElement& ws4 = server_.WS4();
    trap([&] {
        if (ws4.state() == SocketElement::Connected) ws4.send(command, data);
    });
    if (server_.logOn()) server_.WriteLog(trafficLine("Command sent to AIProcess ", "", command, data));
}
