#pragma once
// The AI Spy: streams numbered AIUPDT updates of a few AI aircraft, one message per write,
// since the server takes each read from it as exactly one message.
#include "Conn.h"
#include "Context.h"

class AiSpyPeer {
  public:
    explicit AiSpyPeer(Context& ctx);

    void join();
    void leave();
    void stop() { conn_.close(); }
    bool present() const { return present_; }
    uint64_t updates() const { return updates_; }
    uint64_t syncro() const { return syncro_; }
    uint64_t sessions() const { return sessions_; }

  private:
    void onConnected();
    void tick(int epoch, int64_t due);
    void endSession();

    Context& ctx_;
    Conn conn_;
    bool present_ = false;
    int epoch_ = 0;
    int stream_ = -1;
    uint64_t updates_ = 0, syncro_ = 0, sessions_ = 0;
};
