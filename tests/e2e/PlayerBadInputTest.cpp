// Malformed input on the player port: the failing statement is skipped, the rest of the batch
// runs, the other players see only what the commands send them, and with logging on the
// error log names the routine that failed (which would end the server).
#include "HostilePeers.h"
#include "support/TestServer.h"

#include <QDir>
#include <gmock/gmock.h>

#include <regex>

using ::testing::ElementsAreArray;

namespace {

// "<routine> - Error: <number>" of each error-log line, in order.
std::vector<std::string> loggedErrors(const std::string& log) {
    std::vector<std::string> out;
    const std::regex line(R"(-/- Error at TskSrvForm1::(\w+ - Error: \d+) - )");
    for (std::sregex_iterator it(log.begin(), log.end(), line), end; it != end; ++it)
        out.push_back((*it)[1]);
    return out;
}

const std::string kSetup = "Night Ops\r\nCURSET@BMS\r\n";

// Alpha (position 1, slot 1) and an observer (position 2), both registered.
struct TwoPlayers {
    TestServer ts{{}, false};
    std::unique_ptr<Peer> alpha, observer;
    explicit TwoPlayers(bool logOn) {
        ts.catalogue({{"night.stp", kSetup}}, std::string("[DEBUG]\r\nLOG=") + (logOn ? "1" : "0") + "\r\n");
        ts.start();
        alpha = std::make_unique<Peer>(ts.playerPort());
        alpha->send("VALIDR", "Alpha");
        alpha->take(1);
        observer = std::make_unique<Peer>(ts.playerPort());
        observer->send("VALIDR", "Obs");
        observer->take(1);
        alpha->take(1);
    }
};

TEST(PlayerBadInput, WithLoggingOffEveryBadStatementIsSkippedAndTheBatchGoesOn) {
    TwoPlayers two(false);
    two.alpha->sendRaw(
        batch({"ERRADD1@4", // before any ERRRDM
               "ERRRDM-2", "ERRRDM70000", "ERRRDM1",
               "ERRADD1",   // no line number
               "ERRADD2@3", // past the count
               "ERRADD1@1",
               "ERRGET1", // no setup fetched: the reason is empty
               "ERRGET9", "ERRGET0", "GETVLO5", "verfok", "AB", "", "HELLO!x", "VERFOK", "GETLST"}));
    EXPECT_THAT(texts(two.alpha->take(14)),
                ElementsAreArray({"ERRRDM|1@1", "ERRADD|1@1@", "ERRDON|1", "ERRRDM|9@0", "ERRDON|9",
                                  "ERRRDM|0@0", "ERRDON|0", "VLDONE|", "PLSUPD|1@Alpha@@O", "PLRDIM|2",
                                  "PLSADD|1@Alpha@@O", "PLSADD|2@Obs@@-", "PLDONE|", "AWANUM|0"}));
    EXPECT_THAT(texts(two.observer->take(1)), ElementsAreArray({"PLSUPD|1@Alpha@@O"}));

    // VALEND in the middle of a batch: the rest is still handled, its answers go nowhere.
    two.alpha->sendRaw(batch({"VALEND", "GETLST", "VERFOK"}));
    EXPECT_TRUE(two.alpha->waitForDisconnect());
    EXPECT_THAT(texts(two.observer->take(2)), ElementsAreArray({"PLSDEL|1", "PLSUPD|0@@@"}));

    EXPECT_TRUE(two.observer->settle(50ms).empty());
    EXPECT_TRUE(two.alpha->takeAllTexts().empty());
    EXPECT_EQ(two.ts.endsOfProgram(), 0);
    EXPECT_FALSE(QDir(two.ts.dir()).exists("TessarkSrvErrorLog.txt"));
    EXPECT_FALSE(QDir(two.ts.dir()).exists("TessarkSrvLog.txt"));
}

struct BadCase {
    std::vector<std::string> messages; // only the last is at fault
    std::vector<std::string> repliesToAlpha;
    std::vector<std::string> errors; // what the error log records
};

TEST(PlayerBadInput, WithLoggingOnTheFailingRoutineIsRecorded) {
    const std::vector<BadCase> cases = {
        {{"ERRADD1@4"}, {}, {"PlayerErrorListAdd - Error: 9"}},
        {{"ERRRDM70000"}, {}, {"WS1_DataArrival - Error: 6"}},
        {{"ERRGET9"}, {"ERRRDM|9@0", "ERRDON|9"}, {"SendErrorListToPlayer - Error: 9"}},
        // The send is its own routine's failure; the name look-up fails in the handler.
        {{"GETVLO5"}, {"VLDONE|"}, {"SendSetup - Error: 9", "WS1_DataArrival - Error: 9"}},
        {{"AB"}, {}, {"ParseData - Error: 5"}},
        {{"verfok", "HELLO!"}, {}, {}},
    };
    for (const BadCase& c : cases) {
        TwoPlayers two(true);
        two.alpha->sendRaw(batch(c.messages));
        EXPECT_THAT(texts(two.alpha->take(c.repliesToAlpha.size())), ElementsAreArray(c.repliesToAlpha))
            << c.messages.back();
        two.alpha->settle(30ms);
        EXPECT_THAT(loggedErrors(two.ts.readFile("TessarkSrvErrorLog.txt")), ElementsAreArray(c.errors))
            << c.messages.back();
        EXPECT_EQ(two.ts.endsOfProgram(), static_cast<int>(c.errors.size())) << c.messages.back();
        EXPECT_TRUE(two.observer->takeAllTexts().empty()) << c.messages.back();
    }
}

} // namespace
