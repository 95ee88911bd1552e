// The relays of flight data to the AWACS clients.
#include "relay/AwacsClients.h"

#include "server/Server.h"

void AwacsClients::SendToAwacsClients(const std::string&, int16_t) {}
void AwacsClients::SendToAwacsClients2(const std::string&, int16_t) {}
void AwacsClients::SendToAwacsClients4(const std::string&) {}
