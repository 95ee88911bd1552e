#pragma once
// churn (see Attack.h): short sessions on the player port as fast as the bounds allow, each
// asking for output and ending with VALEND without ever reading, so that the server is left
// with closed connections whose output cannot leave. (A peer that closes its own end instead
// makes the system drop that output at once.)
#include "Attack.h"
#include "Conn.h"

#include <list>
#include <memory>

class ChurnAttack : public Attack {
  public:
    explicit ChurnAttack(Context& ctx) : ctx_(ctx) {}

    void start() override;
    void stop() override { peers_.clear(); }

  private:
    struct Peer {
        std::unique_ptr<Conn> conn;
        int64_t openedAt = 0;
        bool asked = false, gone = false;
    };
    void tick();
    void openOne();
    void sweep(int64_t now);

    Context& ctx_;
    std::list<Peer> peers_;
    int64_t period_ = 0;
};
