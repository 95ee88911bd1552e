#pragma once
// Misbehaving peers, each on the player or the AWACS port, living a few seconds:
//   random - bytes that never form a command (no upper-case letters), with or without NULs
//   nuls   - lone NULs, each an empty message (with logging on this ends the server by design)
//   mega   - one megabyte line with no NUL
// They never use the SIM port: a connection there would move the simulators' slots.
#include "Conn.h"
#include "Context.h"

#include <string>

class RoguePeer {
  public:
    enum class Kind { Random, Nuls, Mega };
    RoguePeer(Context& ctx, Kind kind, bool onPlayerPort, bool withNuls);
    void start();
    bool done() const { return done_; }
    static const char* label(Kind k);

  private:
    void burst(int left);
    void finish();

    Context& ctx_;
    Kind kind_;
    bool playerPort_, withNuls_;
    Conn conn_;
    bool done_ = false;
};
