#pragma once
// A player: registers, walks through the validation exchange (list, setups, one setup, its
// failed lines and verdict, its own error list), streams numbered F4LOCA positions at its
// own rate, and does the exchange again now and then. Each reply is checked.
#include "Conn.h"
#include "Context.h"
#include "ReplyCheck.h"

#include <string>

class PlayerPeer {
  public:
    PlayerPeer(Context& ctx, int index);

    void join();
    // graceful: VALEND first; otherwise the connection just drops.
    void leave(bool graceful);
    void stop() { conn_.close(); }
    bool present() const { return present_; }
    const std::string& name() const { return name_; }

    struct Counts {
        uint64_t ok = 0, bad = 0, timedOut = 0, excused = 0, sessions = 0, syncro = 0, f4loca = 0;
    };
    const Counts& counts() const { return counts_; }
    int stray() const { return check_.stray(); }

  private:
    void onConnected();
    void onMessage(std::string_view m);
    void onClosed();
    void send(std::string_view command, std::string_view data, SendTag::Kind kind = SendTag::Request);
    void tick(int epoch, int64_t due);
    void step(int epoch);
    void awaitReply(ReplyCheck::Kind kind, int position = 0, int expectedCount = -1, std::string mark = {});
    void settle(ReplyCheck::Result r);
    void endSession();

    Context& ctx_;
    std::string name_;
    Conn conn_;
    ReplyCheck check_;
    bool present_ = false;
    int epoch_ = 0;
    int stream_ = -1;
    int64_t period_ = 0;
    int stage_ = 0;        // next step of the exchange
    uint64_t checkId_ = 0; // the reply being waited for
    bool requestSplit_ = false;
    int reportedErrors_ = 0;
    Counts counts_;
};
