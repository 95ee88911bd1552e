// Offering the catalogue to players: first the list of setups by number and name, then, on
// request, one setup's record lines relayed verbatim. Numbers are positions in the catalogue
// at the moment of the request; after a removal the same number names another setup.
//
//   SLRDIM n, SLSADD i@name (i = 1..n), SLDONE
//   VLRDIM m, VLSADD k@line (k = 1..m), VLDONE
#include "net/Text.h"
#include "players/PlayerSessions.h"
#include "server/ErrorTrap.h"
#include "server/Server.h"
#include "setups/SetupCatalogue.h"

void SetupCatalogue::SendSetupList(int16_t player) {
    ErrorTrap trap(server_.errorLog(), "SendSetupList");
    Senders& senders = server_.senders();
    // Asking for the list starts a new validation: the player's mark goes back to "-".
    server_.players().UpdateVerifStatus("?", player);
    const int count = Setups_.ubound();
    trap([&] { senders.SendCommand("SLRDIM", text::number(count), player); });
    // A setup whose file was missing at load is still offered, with an empty name.
    for (int i = 1; i <= count; ++i)
        trap([&] { senders.SendCommand("SLSADD", text::number(i) + "@" + Setups_[i].Name, player); });
    trap([&] { senders.SendCommand("SLDONE", "", player); });
}

void SetupCatalogue::SendSetup(int16_t setupNumber, int16_t player) {
    ErrorTrap trap(server_.errorLog(), "SendSetup");
    Senders& senders = server_.senders();
    // A number outside the catalogue fails every statement that touches the setup, so the
    // player gets only the closing VLDONE.
    const VbList<std::string>* lines = findLines(setupNumber);
    const int count = lines ? lines->ubound() : 0;
    if (trap.require(lines != nullptr, errors::subscriptOutOfRange))
        senders.SendCommand("VLRDIM", text::number(count), player);
    std::string payload;
    for (int k = 1; k <= count; ++k) {
        payload = text::number(k);
        payload += '@';
        payload += (*lines)[k];
        senders.SendCommand("VLSADD", payload, player);
    }
    trap([&] { senders.SendCommand("VLDONE", "", player); });
}
