#pragma once
// Hostile peers that try to keep what the squadron needs, all from one address (see Attack.h):
//
//   silent      player port: 48 connections that never send a byte, made before the squadron
//               joins, each opened again at once when the server lets it go
//   one-address AWACS port: 48 connections that register (NAWACS) and never read, opened again
//               when closed
//   numbers     SIM port: before the squadron joins and then every second, a connection sends
//               48 ADDAIR for a place it does not have (480 bytes) and leaves
//   names       player port: 4 connections, each registered 4 times under a 16,000-byte name,
//               each sending 20 VERFOK in one write every 100 ms; they read what they are sent
#include "Attack.h"
#include "Conn.h"

#include <memory>
#include <vector>

class SquatAttack : public Attack {
  public:
    enum class Kind { Silent, OneAddress, Numbers, Names };
    SquatAttack(Context& ctx, Kind kind);

    // silent and numbers begin before the squadron joins: what they hold, it cannot have.
    void prepare() override;
    void start() override;
    void endTraffic() override { stop(); }
    void stop() override;

  private:
    struct Squatter {
        std::unique_ptr<Conn> conn;
        bool open = false;
    };
    void tick();
    void openSquatter(Squatter& squatter);
    void send(Squatter& squatter, const std::string& bytes, uint64_t messages);

    Context& ctx_;
    Kind kind_;
    std::vector<Squatter> squatters_;
    bool running_ = false;
};
