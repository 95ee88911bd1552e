#pragma once
// The four senders: every message the server sends leaves through one of them. A send is
// fire-and-forget: it goes out only when the socket is connected, is logged either way, and
// its caller learns nothing.
#include <cstdint>
#include <string>
#include <string_view>

class Server;

class Senders {
  public:
    explicit Senders(Server& server) : server_(server) {}
    void SendCommand(std::string_view command, std::string_view data, int16_t index);  // players
    void SendCommand2(std::string_view command, std::string_view data, int16_t index); // AWACS clients
    void SendCommand3(std::string_view command, std::string_view data, int16_t index); // SIM clients
    void SendCommand4(std::string_view command, std::string_view data);                // the AI Spy

  private:
    Server& server_;
};

// "<date> - <time> : <label><index>: (<command>)<data>", a traffic log line.
std::string trafficLine(std::string_view label, std::string_view index, std::string_view command,
                        std::string_view data);
