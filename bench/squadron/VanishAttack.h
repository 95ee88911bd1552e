#pragma once
// Peers that vanish (see Attack.h): every 10 s a new host joins the server's network through a
// veth pair of its own (a network namespace made by this process; needs root, and NETNS=1 so it
// is made inside the run's private namespace), registers 4 AWACS clients, a player and a
// simulator with an airplane, an address each, and 1 s later its link goes down for good: no
// FIN and no reset ever comes. A server that keeps what they held fills its ports with them
// within a minute; one that gives it back holds about two hosts' worth at a time.
#include "Attack.h"
#include "Conn.h"

#include <memory>
#include <string>
#include <vector>

class VanishAttack : public Attack {
  public:
    explicit VanishAttack(Context& ctx) : ctx_(ctx) {}
    ~VanishAttack() override;

    void prepare() override;
    void start() override { cycle(); }
    void stop() override;

  private:
    void cycle();
    // A connection from the far host `host` (its namespace), from address `from` of its network.
    void connectFrom(int host, int from, Port port, const std::string& messages);
    bool run(const std::string& command);

    Context& ctx_;
    int nearNamespace_ = -1;
    std::vector<int> farNamespaces_;
    std::vector<std::unique_ptr<Conn>> conns_;
    bool ready_ = false;
};
