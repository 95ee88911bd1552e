#pragma once
// Hostile peers: one per run (--attack NAME), for the whole traffic period, each doing what a
// remote peer can do to hurt the server, from one connection (churn: a stream of short ones).
// Every attack is bounded in rate and stops sending when the traffic ends; --attack-rate
// scales its batches. At 1:
//
//   simnew        SIM port: 25 lines "SIMNEWh@32767" (14 bytes each) every 100 ms
//   validr        player port: 30,000 VALIDR in one write, again every 5 s; leaves at the end
//   errget        player port: registers before the players, ERRRDM 32767, then 100 ERRGET for
//                 itself in one write each second; never reads
//   nuls          player port: 1 MiB of lone NULs in one write each second; leaves at the end
//   nawacs        AWACS port: 100,000 NAWACS in one write, then stays without reading
//   churn         player port: 25 sessions a second, each 400 GETLST and VALEND in one write,
//                 never read, dropped after 15 s (or when the server gives up on it)
//   getlst-noread player port: 50 GETLST every 100 ms, never reads
//   aispy-nul     AI Spy port, in place of the honest AI Spy: 5 updates a second whose last
//                 record holds a NUL followed by DISCON
//   bigread       player port: fetches the last setup of the list again and again, reading
//                 1.6 MB/s, and checks that every reply is whole
//   silent, one-address, numbers, names: peers that keep what the squadron needs (SquatAttack.h)
//   vanish        hosts whose links are cut under their registered peers (VanishAttack.h)
//
// All but vanish come from one address, --attack-source.
// A write that is not taken at once is not followed by the next one (counted as held back),
// so a server that stops reading never makes the attacker queue without bound.
#include "Context.h"

#include <memory>
#include <string>

struct AttackFigures {
    uint64_t connections = 0;    // opened
    uint64_t closedByServer = 0; // closed by the server (or refused) while the attack used them
    uint64_t writes = 0;         // batches queued
    uint64_t heldBack = 0;       // batches skipped: the previous one was still waiting
    uint64_t bytes = 0;          // bytes queued
    uint64_t messages = 0;       // commands in them
    uint64_t peakOpen = 0;       // connections open at once
    uint64_t roundsWhole = 0, roundsCut = 0, roundsOpen = 0; // bigread: replies whole, cut, unfinished
};

class Attack {
  public:
    virtual ~Attack() = default;
    // At the start of the run, before the honest players join.
    virtual void prepare() {}
    // At --attack-start; runs until the traffic ends.
    virtual void start() = 0;
    // The traffic is over: attacks that leave, leave now; the others stay until stop().
    virtual void endTraffic() {}
    // The run is over: every connection goes.
    virtual void stop() = 0;
    const AttackFigures& figures() const { return figures_; }

  protected:
    AttackFigures figures_;
};

bool isAttackName(const std::string& name);
std::string attackNamesText();
// The AI Spy attack takes the link, so the honest AI Spy stays away in its run.
bool attackTakesAiSpy(const std::string& name);
std::unique_ptr<Attack> makeAttack(Context& ctx, const std::string& name);
