// Offering the catalogue to players: first the list of setups by number and name, then, on
// request, one setup's record lines relayed verbatim. Numbers are positions in the catalogue
// at the moment of the request; after a removal the same number names another setup.
//
//   SLRDIM n, SLSADD i@name (i = 1..n), SLDONE
//   VLRDIM m, VLSADD k@line (k = 1..m), VLDONE
#include "players/PlayerSessions.h"

#include "basics/Text.h"
#include "setups/SetupCatalogue.h"

void PlayerSessions::sendSetupList(int16_t slot) {
    // Asking for the list starts a new validation: the player's mark goes back to "-".
    markVerification("?", slot);
    const VbList<SetupRecord>& setups = setups_.list();
    const int count = setups.ubound();
    channel_.send("SLRDIM", text::number(count), slot);
    // A setup whose file was missing at load is still offered, with an empty name.
    for (int i = 1; i <= count; ++i)
        channel_.send("SLSADD", text::number(i) + "@" + setups[i].name, slot);
    channel_.send("SLDONE", "", slot);
}

void PlayerSessions::sendSetupLines(int16_t setupNumber, int16_t slot) {
    ErrorTrap trap(logs_.errors, "SendSetup");
    // A number outside the catalogue fails every statement that touches the setup, so the
    // player gets only the closing VLDONE.
    const VbList<std::string>* lines = setups_.findLines(setupNumber);
    const int count = lines ? lines->ubound() : 0;
    if (trap.require(lines != nullptr, errors::subscriptOutOfRange))
        channel_.send("VLRDIM", text::number(count), slot);
    std::string payload;
    for (int k = 1; k <= count; ++k) {
        payload = text::number(k);
        payload += '@';
        payload += (*lines)[k];
        channel_.send("VLSADD", payload, slot);
    }
    channel_.send("VLDONE", "", slot);
}
