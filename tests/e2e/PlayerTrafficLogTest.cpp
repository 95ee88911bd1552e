// The traffic log's lines for what players send and receive, with logging on.
#include "support/Peer.h"
#include "support/TestServer.h"

#include <gtest/gtest.h>

#include <regex>

TEST(PlayerTrafficLog, ArrivalsAndSendsAreLoggedLineByLine) {
    TestServer ts{kIniLogOn};
    Peer alpha(ts.playerPort());
    alpha.send("VALIDR", "Alpha");
    alpha.take(1);
    alpha.send("GETLST");      // answered, but its arrival is not logged
    alpha.send("HELLO!", "x"); // unknown: no line at all
    alpha.take(4);
    alpha.send("VLERRO", "free text @ all");
    EXPECT_TRUE(pumpUntil([&] {
        ts.server().trafficLog().flush();
        return ts.readFile("TessarkSrvLog.txt").find("(VLERRO)") != std::string::npos;
    }));

    // Each line is a time stamp and the event, ended by CR LF.
    const std::string log = std::regex_replace(ts.readFile("TessarkSrvLog.txt"),
                                               std::regex(R"(\d\d/\d\d/\d{4} - \d\d:\d\d:\d\d : )"), "");
    EXPECT_EQ(log, "Command arrived from Player #1: (VALIDR)Alpha\r\n"
                   "Command sent to Player #1: (PLSNEW)1@Alpha@@-\r\n"
                   "Command sent to Player #1: (PLRDIM)1\r\n"
                   "Command sent to Player #1: (PLSADD)1@Alpha@@-\r\n"
                   "Command sent to Player #1: (PLDONE)\r\n"
                   "Command sent to Player #1: (AWANUM)0\r\n"
                   "Command arrived from Player #1: (VLERRO)free text @ all\r\n");
    EXPECT_EQ(ts.endsOfProgram(), 0);
}
