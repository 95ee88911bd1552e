// The traffic log's lines for what players send and receive, with logging on.
#include "support/Peer.h"
#include "support/TestServer.h"

#include <gmock/gmock.h>

#include <regex>
#include <sstream>

using ::testing::ElementsAreArray;

namespace {

TEST(PlayerTrafficLog, ArrivalsAndSendsAreLoggedLineByLine) {
    TestServer ts{"[SETUPLIST]\r\nNUM=0\r\n[DEBUG]\r\nLOG=1\r\n"};
    Peer alpha(ts.playerPort());
    alpha.send("VALIDR", "Alpha");
    alpha.take(1);
    alpha.send("GETLST");      // answered, but its arrival is not logged
    alpha.send("HELLO!", "x"); // unknown: no line at all
    alpha.take(4);
    alpha.send("VERFOK");
    alpha.take(1);
    alpha.send("VLERRO", "free text @ all");
    alpha.send("ERRDON");
    alpha.settle(50ms);
    ts.server().trafficLog().flush();

    const std::regex stamp(R"(^\d\d/\d\d/\d{4} - \d\d:\d\d:\d\d : )");
    std::vector<std::string> bodies;
    std::istringstream lines(ts.readFile("TessarkSrvLog.txt"));
    for (std::string line; std::getline(lines, line);) {
        ASSERT_FALSE(line.empty());
        ASSERT_EQ(line.back(), '\r') << "lines end in CR LF";
        line.pop_back();
        std::smatch m;
        ASSERT_TRUE(std::regex_search(line, m, stamp)) << line;
        bodies.push_back(m.suffix());
    }
    EXPECT_THAT(bodies, ElementsAreArray({
                            "Command arrived from Player #1: (VALIDR)Alpha",
                            "Command sent to Player #1: (PLSNEW)1@Alpha@@-",
                            "Command sent to Player #1: (PLRDIM)1",
                            "Command sent to Player #1: (PLSADD)1@Alpha@@-",
                            "Command sent to Player #1: (PLDONE)",
                            "Command sent to Player #1: (AWANUM)0",
                            "Command arrived from Player #1: (VERFOK)",
                            "Command sent to Player #1: (PLSUPD)1@Alpha@@O",
                            "Command arrived from Player #1: (VLERRO)free text @ all",
                            "Command arrived from Player #1: (ERRDON)",
                        }));
    EXPECT_EQ(ts.endsOfProgram(), 0);
}

} // namespace
