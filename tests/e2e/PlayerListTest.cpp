// The player list over loopback: positions that shift on removal, connections that never
// register, and the slot table's limit of 48.
#include "players/PlayerSessions.h"
#include "support/Peer.h"
#include "support/TestServer.h"

#include <gmock/gmock.h>

#include <memory>

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
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
        for (int position : {1, 3, 4})
            expectNext(four.at(position), {"PLSUPD|2@P3@@O"});
        for (int position : {1, 3, 4})
            EXPECT_TRUE(four.at(position).settle(50ms).empty()) << byValend;
    }
}

TEST(PlayerList, ConnectionsWithoutRegistration) {
    TestServer ts{kIniLogOff};
    Peer listed(ts.playerPort());
    listed.send("VALIDR", "Listed");
    expectNext(listed, {"PLSNEW|1@Listed@@-"});

    // A peer that connects and leaves unregistered is announced as position 0.
    {
        Peer silent(ts.playerPort());
        silent.send("VERFOK"); // no record: the update describes the empty element 0
        expectNext(listed, {"PLSUPD|0@@@"});
        silent.close();
    }
    expectNext(listed, {"PLSDEL|0"});

    // A batch that registers and asks at once gets its own announcement first.
    Peer batch(ts.playerPort());
    QByteArray both("VALIDR");
    both += "Batch";
    both += '\0';
    both += "GETLST";
    both += '\0';
    batch.sendRaw(both);
    expectNext(batch, {"PLSNEW|2@Batch@@-", "PLRDIM|2", "PLSADD|1@Listed@@-", "PLSADD|2@Batch@@-", "PLDONE|",
                       "AWANUM|0"});
    expectNext(listed, {"PLSNEW|2@Batch@@-"});

    // Registering twice lists the player twice; both go with the connection.
    batch.send("VALIDR", "Batch");
    expectNext(listed, {"PLSNEW|3@Batch@@-"});
    batch.send("VERNOK");
    expectNext(listed, {"PLSUPD|3@Batch@@X"});
    EXPECT_EQ(ts.server().players().Players()[2].Status, "X");
    batch.close();
    expectNext(listed, {"PLSDEL|3"});
    EXPECT_EQ(ts.server().players().Players().ubound(), 1);
    EXPECT_TRUE(listed.settle(50ms).empty());
    EXPECT_EQ(ts.endsOfProgram(), 0);
}

TEST(PlayerList, TheFortyNinthConnectionGetsNoSlot) {
    for (const std::string& ini : {kIniLogOff, kIniLogOn}) {
        TestServer ts{ini};
        std::vector<std::unique_ptr<Peer>> peers;
        for (int i = 1; i <= 48; ++i)
            peers.push_back(std::make_unique<Peer>(ts.playerPort()));
        PlayerSessions& players = ts.server().players();
        for (int slot = 1; slot <= 48; ++slot)
            ASSERT_TRUE(players.PlayerSlotUsed()[static_cast<size_t>(slot)]);
        EXPECT_EQ(ts.endsOfProgram(), 0);

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
        pumpUntil([&] { return !players.PlayerSlotUsed()[5]; });
        Peer next(ts.playerPort());
        next.send("VALIDR", "Next");
        ASSERT_TRUE(next.waitFor(1));
        EXPECT_EQ(players.Players()[players.Players().ubound()].Slot, 5);
    }
}

} // namespace
