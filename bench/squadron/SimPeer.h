#pragma once
// A SIM client: announces a simulator with a few airplane places, adds and removes
// airplanes and streams numbered SIMLOC positions for each.
//
// The server finds a simulator's record by the client's slot taken as a list position, which
// holds only while simulators join in slot order and none leaves before a later one. So the
// simulators connect one after the other, and only the last one ever leaves and comes back.
#include "Conn.h"
#include "Context.h"

#include <string>
#include <vector>

class SimPeer {
  public:
    SimPeer(Context& ctx, int index);

    void join();
    void leave(); // SIMEND, then the connection drops
    void stop() { conn_.close(); }
    bool present() const { return present_; }
    const std::string& name() const { return name_; }
    uint64_t simloc() const { return simloc_; }
    uint64_t syncro() const { return syncro_; }
    uint64_t sessions() const { return sessions_; }

  private:
    void onConnected();
    void onClosed();
    void send(std::string_view command, std::string_view data);
    void addAirplane(int place);
    void removeAirplane(int place);
    void tick(int epoch, int place, int stream, int64_t due);
    void churnAirplane(int epoch);
    void endSession();

    Context& ctx_;
    std::string name_;
    Conn conn_;
    bool present_ = false;
    int epoch_ = 0;
    std::vector<int> streams_; // by place (1-based); -1 when the place is empty
    uint64_t simloc_ = 0, syncro_ = 0, sessions_ = 0;
};
