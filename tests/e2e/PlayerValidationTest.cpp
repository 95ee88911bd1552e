// One player's whole validation exchange over loopback, with two other players listening.
// Every message that each of them receives is compared, in order, byte for byte.
#include "setups/SetupCatalogue.h"
#include "support/Peer.h"
#include "support/TestServer.h"

#include <gmock/gmock.h>

namespace {

const char* const kNightOps = "Night Ops\r\n"
                              "CURSET@BMS\r\n"
                              "CHKSIM\r\n"
                              "// checked by hand on the squadron's reference install\r\n"
                              "CURTHE@Theater A\r\n"
                              "CHKSUM@data\\file1.dat@1234\r\n"
                              "  CONFIG@entry_one@1  \r\n";

struct Validation : ::testing::Test {
    TestServer ts{{}, false};
    void SetUp() override {
        ts.writeFile("night.stp", kNightOps);
        ts.writeFile("tessark.ini", ts.setupList({"night.stp", "gone.stp"}) + "[DEBUG]\r\nLOG=0\r\n");
        ts.start();
    }
};

TEST_F(Validation, APlayerWalksTheWholeExchangeAndTheOthersAreKeptInformed) {
    ASSERT_EQ(ts.display().messageBoxes.size(), 1);
    Peer charlie(ts.playerPort());
    charlie.send("VALIDR", "Charlie");
    expectNext(charlie, {"PLSNEW|1@Charlie@@-"});
    Peer bravo(ts.playerPort());
    bravo.send("VALIDR", "Bravo");
    expectNext(bravo, {"PLSNEW|2@Bravo@@-"});
    expectNext(charlie, {"PLSNEW|2@Bravo@@-"});

    Peer alpha(ts.playerPort());
    alpha.send("VALIDR", "Alpha");
    alpha.send("GETLST");
    expectNext(alpha, {"PLSNEW|3@Alpha@@-", "PLRDIM|3", "PLSADD|1@Charlie@@-", "PLSADD|2@Bravo@@-",
                       "PLSADD|3@Alpha@@-", "PLDONE|", "AWANUM|0"});

    alpha.send("GETVLA");
    expectNext(alpha, {"PLSUPD|3@Alpha@@-", "SLRDIM|2", "SLSADD|1@Night Ops", "SLSADD|2@", "SLDONE|"});

    alpha.send("GETVLO", "1");
    expectNext(alpha, {"VLRDIM|5", "VLSADD|1@CURSET@BMS", "VLSADD|2@CHKSIM", "VLSADD|3@CURTHE@Theater A",
                       "VLSADD|4@CHKSUM@data\\file1.dat@1234", "VLSADD|5@CONFIG@entry_one@1", "VLDONE|"});

    // The player's program found every line wrong; the places may come in any order.
    alpha.send("ERRRDM", "5");
    for (const char* place : {"5@3", "2@2", "4@5", "1@4", "3@1"})
        alpha.send("ERRADD", place);
    alpha.send("ERRDON");
    alpha.send("VLERRO", "two lines failed");
    alpha.send("VERNOK");
    expectNext(alpha, {"PLSUPD|3@Alpha@Night Ops@X"});
    EXPECT_EQ(ts.display().rows.back().text, "Alpha (Night Ops)");
    EXPECT_EQ(ts.display().rows.back().image, 2);

    bravo.send("ERRGET", "3");
    expectNext(bravo, {"PLSNEW|3@Alpha@@-", "PLSUPD|3@Alpha@@-", "PLSUPD|3@Alpha@Night Ops@X", "ERRRDM|3@5",
                       "ERRADD|3@1@The data\\file1.dat file is differrent or absent",
                       "ERRADD|3@2@There is a directory called 'Sim' in your setup. Please delete it...",
                       "ERRADD|3@3@Your current setup is different",
                       "ERRADD|3@4@The entry_one entry in cofig file is differrent or absent",
                       "ERRADD|3@5@Your currently selected theater is different", "ERRDON|3"});

    // A player that never reported has an empty list.
    bravo.send("ERRGET", "1");
    expectNext(bravo, {"ERRRDM|1@0", "ERRDON|1"});

    alpha.send("VALEND");
    EXPECT_TRUE(alpha.waitForDisconnect());
    expectNext(bravo, {"PLSDEL|3"});
    expectNext(charlie, {"PLSNEW|3@Alpha@@-", "PLSUPD|3@Alpha@@-", "PLSUPD|3@Alpha@Night Ops@X", "PLSDEL|3"});

    charlie.send("GETLST");
    expectNext(charlie, {"PLRDIM|2", "PLSADD|1@Charlie@@-", "PLSADD|2@Bravo@@-", "PLDONE|", "AWANUM|0"});

    // Nothing else reached anybody.
    EXPECT_TRUE(charlie.settle().empty());
    EXPECT_TRUE(bravo.settle().empty());
    EXPECT_TRUE(alpha.takeAllTexts().empty());
    EXPECT_EQ(ts.endsOfProgram(), 0);
}

TEST_F(Validation, SetupRequestsOutsideTheCatalogueGetOnlyTheClosingMessage) {
    Peer alpha(ts.playerPort());
    alpha.send("VALIDR", "Alpha");
    expectNext(alpha, {"PLSNEW|1@Alpha@@-"});

    alpha.send("GETVLO", "2"); // catalogued, but its file was missing
    expectNext(alpha, {"VLRDIM|0", "VLDONE|"});
    alpha.send("GETVLO", "3");
    expectNext(alpha, {"VLDONE|"});
    // 40000 is no 16-bit number: the request is dropped whole, so the next answer is GETLST's.
    alpha.send("GETVLO", "40000");
    alpha.send("GETLST");
    expectNext(alpha, {"PLRDIM|1", "PLSADD|1@Alpha@@-", "PLDONE|", "AWANUM|0"});
    // The last number that was a setup's stays noted: 2, whose name is empty.
    alpha.send("VERFOK");
    expectNext(alpha, {"PLSUPD|1@Alpha@@O"});
    alpha.send("GETVLO", "1abc");
    alpha.send("GETVLO", "7"); // past the catalogue: the name stays
    alpha.take(7);
    expectNext(alpha, {"VLDONE|"});
    alpha.send("VERFOK");
    expectNext(alpha, {"PLSUPD|1@Alpha@Night Ops@O"});
    EXPECT_TRUE(alpha.settle().empty());
}

} // namespace
