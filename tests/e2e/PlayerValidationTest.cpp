// One player's whole validation exchange over loopback, with two other players listening.
// Every message that each of them receives is compared, in order, byte for byte.
#include "setups/SetupCatalogue.h"
#include "support/Peer.h"
#include "support/TestServer.h"

#include <gmock/gmock.h>

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

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
        const std::string dir = ts.dir().toStdString();
        ts.writeFile("night.stp", kNightOps);
        ts.writeFile("tessark.ini", "[SETUPLIST]\r\nNUM=2\r\n[SETUPLIST1]\r\nFNAME=" + dir +
                                        "night.stp\r\n[SETUPLIST2]\r\nFNAME=" + dir +
                                        "gone.stp\r\n[DEBUG]\r\nLOG=0\r\n");
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

    // The player's program found lines 4 and 5 wrong; the places may come in any order.
    alpha.send("ERRRDM", "2");
    alpha.send("ERRADD", "2@5");
    alpha.send("ERRADD", "1@4");
    alpha.send("ERRDON");
    alpha.send("VLERRO", "two lines failed");
    alpha.send("VERNOK");
    expectNext(alpha, {"PLSUPD|3@Alpha@Night Ops@X"});
    EXPECT_EQ(ts.display().rows.back().text, "Alpha (Night Ops)");
    EXPECT_EQ(ts.display().rows.back().image, 2);

    bravo.send("ERRGET", "3");
    expectNext(bravo, {"PLSNEW|3@Alpha@@-", "PLSUPD|3@Alpha@@-", "PLSUPD|3@Alpha@Night Ops@X", "ERRRDM|3@2",
                       "ERRADD|3@1@The data\\file1.dat file is differrent or absent",
                       "ERRADD|3@2@The entry_one entry in cofig file is differrent or absent", "ERRDON|3"});

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
    for (const char* number : {"0", "3", "-1", "none", "40000"}) {
        alpha.send("GETVLO", number);
        if (std::string(number) != "40000") expectNext(alpha, {"VLDONE|"});
    }
    // 40000 is no 16-bit number: the request is dropped whole, so the next answer is GETLST's.
    alpha.send("GETLST");
    expectNext(alpha, {"PLRDIM|1", "PLSADD|1@Alpha@@-", "PLDONE|", "AWANUM|0"});

    // The last number that was a setup's stays noted; "none" counted as 0, the empty element.
    alpha.send("GETVLO", " 1.5"); // rounds to 2
    expectNext(alpha, {"VLRDIM|0", "VLDONE|"});
    alpha.send("VERFOK");
    expectNext(alpha, {"PLSUPD|1@Alpha@@O"});
    alpha.send("GETVLO", "1abc");
    expectNext(alpha, {"VLRDIM|5"});
    alpha.take(6);
    alpha.send("GETVLO", "7"); // past the catalogue: the name stays
    expectNext(alpha, {"VLDONE|"});
    alpha.send("VERFOK");
    expectNext(alpha, {"PLSUPD|1@Alpha@Night Ops@O"});
    EXPECT_TRUE(alpha.settle().empty());
}

TEST_F(Validation, ReasonsAreExplainedAgainstTheCatalogueAsItIsNow) {
    ts.writeFile("kinds.stp", "Kinds\r\nCURSET@COB\r\nCURTHE@T\r\nCHKSIM@extra\r\nCONFIG\r\nUNKNOW@x\r\n");
    auto& setups = ts.server().setups().editableSetups();
    setups[2].FilePath = ts.dir().toStdString() + "kinds.stp";
    ts.server().setups().commit();

    Peer alpha(ts.playerPort());
    alpha.send("VALIDR", "Alpha");
    alpha.send("GETVLO", "2");
    alpha.send("ERRRDM", "7");
    for (int i = 1; i <= 7; ++i)
        alpha.send("ERRADD", std::to_string(i) + "@" + std::to_string(i == 7 ? 0 : i));
    alpha.send("ERRGET", "1");
    alpha.send("ERRGET", "2"); // nobody at position 2
    expectNext(alpha, {"PLSNEW|1@Alpha@@-", "VLRDIM|5"});
    alpha.take(6);
    expectNext(alpha, {"ERRRDM|1@7", "ERRADD|1@1@Your current setup is different",
                       "ERRADD|1@2@Your currently selected theater is different",
                       "ERRADD|1@3@There is a directory called 'Sim' in your setup. Please delete it...",
                       "ERRADD|1@4@", "ERRADD|1@5@", "ERRADD|1@6@", "ERRADD|1@7@", "ERRDON|1", "ERRRDM|2@0",
                       "ERRDON|2"});

    // The operator replaces setup 2's file: the same numbers now explain other lines.
    ts.writeFile("kinds.stp", "Kinds\r\nCHKSUM@data\\new.dat@1\r\n");
    ts.server().setups().commit();
    alpha.send("ERRGET", "1");
    expectNext(alpha,
               {"ERRRDM|1@7", "ERRADD|1@1@The data\\new.dat file is differrent or absent", "ERRADD|1@2@"});
    alpha.take(6);
    EXPECT_EQ(ts.endsOfProgram(), 0);
}

} // namespace
