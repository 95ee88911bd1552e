#pragma once
// The hostile peers that work from one connection, writing a batch every period (see Attack.h).
#include "Attack.h"
#include "Conn.h"

#include <string>

class FloodAttack : public Attack {
  public:
    enum class Kind { SimNew, Validr, ErrGet, Nuls, Nawacs, GetlstNoRead, AiSpyNul };
    FloodAttack(Context& ctx, Kind kind);

    void prepare() override;
    void start() override;
    void endTraffic() override;
    void stop() override { conn_.close(); }

  private:
    struct Plan {
        Port port;
        double periodS;
        int maxWrites;    // 0: for the whole traffic period
        bool reads;       // reads (and ignores) what the server sends
        bool leavesAtEnd; // closes when the traffic ends, so memory kept afterwards shows
    };
    static Plan planFor(Kind kind);
    void open();
    void onConnected();
    void onMessage(std::string_view m);
    void beginBatches();
    void tick();
    std::string batch(uint64_t& messages);
    int scaled(double n) const;

    Context& ctx_;
    Kind kind_;
    Plan plan_;
    Conn conn_;
    bool started_ = false, ready_ = false; // ready: connected, and registered where needed
    bool ticking_ = false;
    int position_ = 0; // errget: the attacker's own list position
    uint64_t validrSent_ = 0;
};
