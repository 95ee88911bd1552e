#pragma once
// Peers of the flight picture over loopback: AWACS clients that register, simulators that
// announce themselves, and a stand-in for a player's registration.
#include "players/PlayerSessions.h"
#include "relay/AwacsClients.h"
#include "relay/SimClients.h"
#include "support/Peer.h"
#include "support/TestServer.h"

#include <QTcpSocket>
#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

class RelayTest : public ::testing::Test {
  protected:
    explicit RelayTest(const std::string& iniText = {}, const std::string& settings = {})
        : ts_(iniText, true, settings) {}

    Server& server() { return ts_.server(); }
    int awacsListed() { return server().awacs().listed().ubound(); }
    int simsListed() { return server().sims().simulators().ubound(); }

    // An AWACS client that sent NAWACS and is listed.
    std::unique_ptr<Peer> registeredAwacs() {
        auto peer = std::make_unique<Peer>(ts_.awacsPort());
        const int before = awacsListed();
        peer->send("NAWACS");
        EXPECT_TRUE(pumpUntil([&] { return awacsListed() == before + 1; }));
        return peer;
    }

    // A SIM client that announced "name@places".
    std::unique_ptr<Peer> announcedSim(const std::string& name, int places) {
        auto peer = std::make_unique<Peer>(ts_.simPort());
        const int before = simsListed();
        peer->send("SIMNEW", name + "@" + std::to_string(places));
        EXPECT_TRUE(pumpUntil([&] { return simsListed() == before + 1; }));
        return peer;
    }

    // Sends and lets the server handle it; what the peers received is left in their inboxes.
    void sendAndSettle(Peer& peer, const std::string& command, const std::string& data = {}) {
        peer.send(command, data);
        pumpFor(60ms);
    }

    // Connects, offers what it has to say, and reports whether the server turned it away.
    static bool turnedAway(quint16 port, const QByteArray& offered = {}) {
        QTcpSocket socket;
        socket.connectToHost(QHostAddress::LocalHost, port);
        if (!offered.isEmpty()) socket.write(offered);
        return pumpUntil([&] { return socket.state() == QAbstractSocket::UnconnectedState; });
    }

    TestServer ts_;
};
