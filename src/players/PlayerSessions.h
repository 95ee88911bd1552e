#pragma once
// The players (port 5555): the registered players and their broadcasts, the status window's
// rows, what players send, the setups offered to them and each player's list of failed setup
// lines.
//
// A connection and a listed player are two things: a socket gets a slot on accept; a record
// is made only when the peer registers with VALIDR. Players know each other by position in
// the roster (which shifts down on removal), AWACS clients know players by slot.
#include "basics/ErrorTrap.h"
#include "basics/RunLogs.h"
#include "basics/StatusDisplay.h"
#include "basics/VbList.h"
#include "net/SlotChannel.h"
#include "relay/PictureSource.h"
#include "relay/PlayerAudience.h"

#include <cstdint>
#include <string>
#include <string_view>

class AwacsClients;
class SetupCatalogue;

struct PlayerRecord {
    std::string name;            // the whole VALIDR payload
    std::string setupName;       // name of the setup last fetched with GETVLO
    int16_t setupNumber = 0;     // its number in the catalogue
    std::string mark;            // "-" not verified, "O" verified, "X" failed
    int16_t slot = 0;            // the slot of the player's connection
    VbList<int16_t> failedLines; // numbers of the setup lines that failed, 1..ubound
};

class PlayerSessions : public PictureSource, public PlayerAudience {
  public:
    static const ChannelNames& channelNames();

    PlayerSessions(SlotChannel& channel, AwacsClients& awacs, const SetupCatalogue& setups, RunLogs logs,
                   StatusDisplay& display);

    // Start-up: nobody listed, every slot free.
    void reset();

    // The roster and its broadcasts.
    void addPlayer(std::string_view name, int16_t slot);
    // VALEND or the connection gone: the slot is freed and its records leave the roster.
    void dropPlayer(int16_t slot);
    void sendPlayerList(int16_t slot);
    // "OK" marks "O", "NOK" marks "X", "?" marks "-".
    void markVerification(std::string_view verdict, int16_t slot);
    void chooseSetup(std::string_view payload, int16_t slot, ErrorTrap& trap);
    // F4LOCA: on to every AWACS client.
    void relayPosition(std::string_view data, int16_t slot);

    // The catalogue offered: the list of setups (the player's mark goes back to "-" first), and
    // one setup's record lines exactly as loaded.
    void sendSetupList(int16_t slot);
    void sendSetupLines(int16_t setupNumber, int16_t slot);

    // The failed-line lists that players report and ask for.
    void resizeFailedLines(int16_t slot, int16_t count);
    void addFailedLine(std::string_view payload, int16_t slot);
    void sendFailedLines(int16_t toSlot, int16_t position);
    std::string failureReason(int16_t position, int16_t lineNumber);

    const VbList<PlayerRecord>& roster() const { return roster_; }
    // 1 verified, 2 failed, 3 not yet verified, 0 none: the image the status window shows.
    static int16_t imageOfMark(std::string_view mark);

    void sendToEveryPlayer(std::string_view command, std::string_view data) override;
    void announceTo(const Announce& announce) const override;

  private:
    // The slot's records leave the roster, and everyone hears it.
    void removePlayer(int16_t slot);
    // What a VALIDR after VALEND in the same write listed (the channel's leftovers).
    void forgetPlayer(int16_t slot);
    void serveCommands();
    void showRoster();
    // Position "@" name "@" setup name "@" mark, as PLSNEW, PLSUPD and PLSADD carry it.
    std::string describe(int position) const;
    // The first record on the slot, or none.
    PlayerRecord* firstOnSlot(int16_t slot);

    SlotChannel& channel_;
    AwacsClients& awacs_;
    const SetupCatalogue& setups_;
    RunLogs logs_;
    StatusDisplay& display_;
    VbList<PlayerRecord> roster_;
};
