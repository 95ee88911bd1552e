#pragma once
// The evening: joins every peer, drives churn and misbehaving peers, samples the server,
// reports as it goes and sums up at the end.
#include "AiSpyPeer.h"
#include "AwacsPeer.h"
#include "Context.h"
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
    ServerProbe probe_;
};
