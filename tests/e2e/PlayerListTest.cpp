// The player list over loopback: positions that shift on removal, connections that never
// register, and the slot table's limit of 48.
#include "players/PlayerSessions.h"
#include "support/Peer.h"
#include "support/TestServer.h"

#include <gmock/gmock.h>

#include <memory>

using ::testing::HasSubstr;

namespace {

// Four registered players, P1..P4 at positions 1..4, their inboxes emptied.
struct FourPlayers {
    TestServer ts{kIniLogOff};
    std::vector<std::unique_ptr<Peer>> peers;
    FourPlayers() {
        for (int i = 1; i <= 4; ++i) {
            peers.push_back(std::make_unique<Peer>(ts.playerPort()));
            peers.back()->send("VALIDR", "P" + std::to_string(i));
            peers.back()->waitFor(1);
        }
        // Player i saw its own PLSNEW and those of everyone after it.
        for (int i = 1; i <= 4; ++i)
            at(i).take(static_cast<size_t>(5 - i));
    }
    Peer& at(int position) { return *peers[static_cast<size_t>(position - 1)]; }
};

TEST(PlayerList, RemovingPositionTwoOfFourRenumbersTheRest) {
    for (bool byValend : {true, false}) {
        FourPlayers four;
        if (byValend)
            four.at(2).send("VALEND");
        else
            four.at(2).close();
        for (int position : {1, 3, 4})
            expectNext(four.at(position), {"PLSDEL|2"});

        four.at(4).send("GETLST");
        expectNext(four.at(4),
                   {"PLRDIM|3", "PLSADD|1@P1@@-", "PLSADD|2@P3@@-", "PLSADD|3@P4@@-", "PLDONE|", "AWANUM|0"});
        // The former position 3 is now 2, and is announced as such.
        four.at(3).send("VERFOK");
        for (int position : {1, 3, 4}) {
            expectNext(four.at(position), {"PLSUPD|2@P3@@O"});
            EXPECT_TRUE(four.at(position).settle(50ms).empty()) << byValend;
        }
        EXPECT_EQ(four.ts.display().rows.at(1).text, "P3 ()");
        EXPECT_EQ(four.ts.display().rows.at(1).image, 1);
    }
}

TEST(PlayerList, ConnectionsWithoutRegistration) {
    TestServer ts{kIniLogOff};
    Peer listed(ts.playerPort());
    listed.send("VALIDR", "Listed");
    expectNext(listed, {"PLSNEW|1@Listed@@-"});

    // A peer that connects and leaves unregistered is announced as position 0.
    Peer(ts.playerPort()).close();
    expectNext(listed, {"PLSDEL|0"});

    // Registering twice lists the player twice; both go with the connection.
    Peer batch(ts.playerPort());
    batch.send("VALIDR", "Batch");
    expectNext(listed, {"PLSNEW|2@Batch@@-"});
    batch.send("VALIDR", "Batch");
    batch.send("VERNOK");
    expectNext(listed, {"PLSNEW|3@Batch@@-", "PLSUPD|3@Batch@@X"});
    batch.close();
    expectNext(listed, {"PLSDEL|3"});
    EXPECT_EQ(ts.server().players().roster().ubound(), 1);
    EXPECT_TRUE(listed.settle(50ms).empty());
    EXPECT_EQ(ts.endsOfProgram(), 0);
}

TEST(PlayerList, TheFortyNinthConnectionGetsNoSlot) {
    for (const std::string& ini : {kIniLogOff, kIniLogOn}) {
        // All 48 from loopback: one address may hold them all here.
        TestServer ts{ini, true, "[access]\nper-address = 0\n"};
        std::vector<std::unique_ptr<Peer>> peers;
        for (int i = 1; i <= 48; ++i)
            peers.push_back(std::make_unique<Peer>(ts.playerPort()));
        PlayerSessions& players = ts.server().players();
        ASSERT_TRUE(ts.server().playerNumbers()[48]);

        // The connection is refused as soon as it is made: a plain socket sees it come and go.
        QTcpSocket refused;
        bool dropped = false;
        QObject::connect(&refused, &QTcpSocket::disconnected, [&] { dropped = true; });
        QObject::connect(&refused, &QTcpSocket::errorOccurred, [&] { dropped = true; });
        refused.connectToHost(QHostAddress::LocalHost, ts.playerPort());
        EXPECT_TRUE(pumpUntil([&] { return dropped; }));
        if (ini == kIniLogOn) {
            EXPECT_EQ(ts.endsOfProgram(), 1);
            EXPECT_THAT(ts.readFile("TessarkSrvErrorLog.txt"),
                        HasSubstr(" -/- Error at TskSrvForm1::WS1_ConnectionRequest - Error: "));
        } else {
            EXPECT_EQ(ts.endsOfProgram(), 0);
            EXPECT_EQ(ts.readFile("TessarkSrvErrorLog.txt"), "");
        }

        // The lowest free slot is the next one handed out.
        peers[4]->close();
        pumpUntil([&] { return !ts.server().playerNumbers()[5]; });
        Peer next(ts.playerPort());
        next.send("VALIDR", "Next");
        ASSERT_TRUE(next.waitFor(1));
        EXPECT_EQ(players.roster()[players.roster().ubound()].slot, 5);
    }
}

} // namespace
