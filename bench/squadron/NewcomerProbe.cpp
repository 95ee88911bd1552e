#include "NewcomerProbe.h"

namespace {
constexpr int64_t kPatienceNs = 3 * kSec;
}

void NewcomerProbe::start() {
    if (ctx_.opt.newcomerEvery > 0) next();
}

void NewcomerProbe::stop() {
    conn_.reset();
}

void NewcomerProbe::next() {
    if (!ctx_.sending()) return;
    ctx_.loop.after(ctx_.seconds(ctx_.opt.newcomerEvery), [this] { next(); });
    if (conn_) return; // the previous one is still waiting
    ++tried_;
    const uint64_t attempt = ++attempt_;
    openedAt_ = nowNs();
    conn_ = std::make_unique<Conn>(ctx_.loop,
                                   Conn::Callbacks{[this] { conn_->send(std::string_view("NAWACS\0", 7)); },
                                                   [this, attempt](std::string_view) {
                                                       if (attempt == attempt_) settle(true);
                                                   },
                                                   [this, attempt] {
                                                       if (attempt == attempt_) settle(false);
                                                   },
                                                   nullptr});
    if (!conn_->open(ctx_.awacsAddr)) {
        conn_.reset();
        return;
    }
    ctx_.loop.after(kPatienceNs, [this, attempt] {
        if (attempt == attempt_ && conn_) settle(false);
    });
}

// Called from the connection's own callbacks: it is closed now and thrown away later.
void NewcomerProbe::settle(bool joined) {
    ++attempt_;
    if (joined) {
        ++joined_;
        joinTime_.add(nowNs() - openedAt_);
    }
    conn_->close();
    ctx_.loop.after(0, [this, old = std::shared_ptr<Conn>(std::move(conn_))] {});
}
