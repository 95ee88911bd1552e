#include "RoguePeer.h"

RoguePeer::RoguePeer(Context& ctx, Kind kind, bool onPlayerPort, bool withNuls)
    : ctx_(ctx), kind_(kind), playerPort_(onPlayerPort), withNuls_(withNuls),
      conn_(ctx.loop, Conn::Callbacks{[this] { burst(3); }, nullptr, [this] { done_ = true; }, nullptr}) {}

const char* RoguePeer::label(Kind k) {
    switch (k) {
    case Kind::Random:
        return "random";
    case Kind::Nuls:
        return "nuls";
    case Kind::Mega:
        return "mega";
    }
    return "?";
}

void RoguePeer::start() {
    if (!conn_.open(playerPort_ ? ctx_.playerAddr : ctx_.awacsAddr)) done_ = true;
}

void RoguePeer::burst(int left) {
    if (done_ || !conn_.isOpen()) return;
    std::string bytes;
    switch (kind_) {
    case Kind::Random: {
        bytes.resize(size_t(1 + ctx_.pick(4096)));
        for (char& c : bytes) {
            c = char(ctx_.pick(256));
            if (c >= 'A' && c <= 'Z') c = char(c + 32);
            if (c == '\0' && !withNuls_) c = '.';
        }
        break;
    }
    case Kind::Nuls:
        bytes.assign(1, '\0');
        break;
    case Kind::Mega:
        bytes.assign(1 << 20, 'z');
        left = 1;
        break;
    }
    conn_.send(bytes);
    if (left > 1)
        ctx_.loop.after(200 * kMs, [this, left] { burst(left - 1); });
    else
        ctx_.loop.after(500 * kMs, [this] { finish(); });
}

void RoguePeer::finish() {
    if (done_) return;
    if (conn_.isOpen() && conn_.queuedBytes() > 0 && ctx_.sending()) { // the megabyte is still going out
        ctx_.loop.after(200 * kMs, [this] { finish(); });
        return;
    }
    conn_.close();
    done_ = true;
}
