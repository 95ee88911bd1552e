#pragma once
// The evening: joins every peer, drives churn, misbehaving peers and a hostile one, samples
// the server, reports as it goes, may stop the server at the end, and sums up.
#include "AiSpyPeer.h"
#include "Attack.h"
#include "AwacsPeer.h"
#include "Context.h"
#include "NewcomerProbe.h"
#include "PlayerPeer.h"
#include "RoguePeer.h"
#include "ServerProbe.h"
#include "SimPeer.h"

#include <map>
#include <memory>
#include <vector>

class Squadron {
  public:
    explicit Squadron(const Options& options);
    // Runs for --duration (+ drain) and returns 0 when every promise held.
    int run();

  private:
    void scheduleJoins();
    void churnOne();
    void scheduleChurn();
    void churnLastSim();
    void churnAiSpy();
    void spawnRogue();
    void sample();
    void stopServer();
    void periodicReport();
    int finalReport();
    LossTotals lossesFor(const AwacsPeer& a, int64_t cutoff) const;
    double secondsSinceStart() const;

    Context ctx_;
    std::vector<std::unique_ptr<PlayerPeer>> players_;
    std::vector<std::unique_ptr<AwacsPeer>> awacs_; // the stalled ones last
    std::vector<std::unique_ptr<SimPeer>> sims_;
    std::unique_ptr<AiSpyPeer> ai_;
    std::vector<std::unique_ptr<RoguePeer>> rogues_;
    std::map<std::string, int> rogueCounts_;
    std::unique_ptr<Attack> attack_;
    NewcomerProbe newcomers_;
    ServerProbe probe_;
    // The shutdown at the end (--stop-server): notices owed to the peers present, and how long
    // the server took to exit (-1: still there after --stop-wait).
    bool stopSent_ = false;
    uint64_t noticesOwed_ = 0;
    double shutdownS_ = -1;
};
