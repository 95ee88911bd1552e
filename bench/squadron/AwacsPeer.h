#pragma once
// An AWACS client: registers with NAWACS, keeps the picture of numbers announced with
// NEWCLT/DELCLT, and checks every INDATA and AILOCA against the stamps the senders wrote.
// A stalled one registers the same way and then stops reading (it is not counted).
#include "Conn.h"
#include "Context.h"

#include <array>
#include <string>

class AwacsPeer {
  public:
    AwacsPeer(Context& ctx, int index, bool stalled);

    void join();
    // graceful: AWAEND, then read until the server closes; otherwise drop the connection.
    void leave(bool graceful);
    void stop() { conn_.close(); }
    bool present() const { return present_; }
    bool stalled() const { return stalled_; }
    int index() const { return index_; }
    const std::vector<int>& receivers() const { return receivers_; }
    uint64_t indata() const { return indata_; }
    uint64_t ailoca() const { return ailoca_; }
    uint64_t syncro() const { return syncro_; }
    uint64_t sessions() const { return receivers_.size(); }

  private:
    void onConnected();
    void onMessage(std::string_view m);
    void onClosed();
    void onIndata(std::string_view data, int64_t now);
    void onAiloca(std::string_view data, int64_t now);
    void endSession(int64_t at);

    Context& ctx_;
    int index_;
    bool stalled_;
    Conn conn_;
    bool present_ = false, leaving_ = false;
    int epoch_ = 0;
    int receiver_ = -1;
    std::vector<int> receivers_;
    std::array<std::string, 64> announced_;
    uint64_t indata_ = 0, ailoca_ = 0, syncro_ = 0;
};
