#pragma once
// bigread (see Attack.h): a peer that asks for a large reply, the last setup of the list, and
// reads it slowly. It keeps reading, so it must get every message of every reply.
#include "Attack.h"
#include "Conn.h"
#include "ReplyCheck.h"

class BigReadAttack : public Attack {
  public:
    explicit BigReadAttack(Context& ctx);

    void start() override;
    void stop() override { conn_.close(); }

  private:
    void onConnected();
    void onMessage(std::string_view m);
    void request(std::string_view command, std::string_view data, ReplyCheck::Kind kind);
    void nextRound();
    void tick();

    Context& ctx_;
    Conn conn_;
    ReplyCheck check_;
    bool skipping_ = false; // a cut reply: its remaining messages are let by until VLDONE
    int64_t lastRequest_ = 0;
};
