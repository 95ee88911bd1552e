#include "SquatAttack.h"

#include "AttackBatches.h"

#include <algorithm>

namespace {
constexpr int kConnections = 48;
constexpr int kNameConnections = 4;
constexpr size_t kNameBytes = 16000;
constexpr int kNonReaderBuffer = 4096;
} // namespace

SquatAttack::SquatAttack(Context& ctx, Kind kind) : ctx_(ctx), kind_(kind) {
    const int count = kind == Kind::Names ? kNameConnections : kind == Kind::Numbers ? 1 : kConnections;
    squatters_.resize(size_t(count));
    for (Squatter& s : squatters_) {
        Squatter* self = &s;
        s.conn = std::make_unique<Conn>(
            ctx.loop,
            Conn::Callbacks{
                [this, self] {
                    // Registered squatters say who they are, and no more.
                    if (kind_ == Kind::OneAddress) send(*self, attackbatch::repeated("NAWACS", "", 1), 1);
                    if (kind_ == Kind::Names)
                        send(*self, attackbatch::repeated("VALIDR", std::string(kNameBytes, 'N'), 4), 4);
                    if (kind_ == Kind::Numbers) {
                        send(*self, attackbatch::repeated("ADDAIR", "999", kConnections), kConnections);
                        self->conn->shutdownWrite();
                    }
                },
                nullptr,
                [this, self] {
                    self->open = false;
                    if (ctx_.sending()) ++figures_.closedByServer;
                },
                nullptr});
    }
}

void SquatAttack::send(Squatter& squatter, const std::string& bytes, uint64_t messages) {
    squatter.conn->send(bytes);
    ++figures_.writes;
    figures_.bytes += bytes.size();
    figures_.messages += messages;
}

void SquatAttack::openSquatter(Squatter& squatter) {
    squatter.conn->setSource(ctx_.attackSource);
    squatter.conn->setWriteChunk(64u << 20);
    const bool reads = kind_ == Kind::Names || kind_ == Kind::Numbers;
    if (!squatter.conn->open(ctx_.address(kind_ == Kind::Silent       ? Port::Player
                                          : kind_ == Kind::OneAddress ? Port::Awacs
                                          : kind_ == Kind::Numbers    ? Port::Sim
                                                                      : Port::Player),
                             reads ? 0 : kNonReaderBuffer)) {
        ++figures_.closedByServer;
        return;
    }
    if (!reads) squatter.conn->setReading(false);
    squatter.open = true;
    ++figures_.connections;
}

void SquatAttack::prepare() {
    if (kind_ != Kind::Silent && kind_ != Kind::Numbers) return;
    for (Squatter& s : squatters_)
        openSquatter(s);
}

void SquatAttack::start() {
    running_ = true;
    tick();
}

void SquatAttack::tick() {
    if (!running_ || !ctx_.sending()) return;
    uint64_t open = 0;
    for (Squatter& s : squatters_) {
        if (kind_ == Kind::Numbers && s.open) { // one round a connection: a second is long enough
            s.conn->close();
            s.open = false;
        }
        if (!s.open) {
            openSquatter(s);
        } else if (kind_ == Kind::Names) {
            if (s.conn->queuedBytes() > 0)
                ++figures_.heldBack;
            else
                send(s, attackbatch::repeated("VERFOK", "", 20), 20);
        }
        open += s.open;
    }
    figures_.peakOpen = std::max(figures_.peakOpen, open);
    const double period = kind_ == Kind::Numbers ? 1.0 : kind_ == Kind::Names ? 0.1 : 0.25;
    ctx_.loop.after(ctx_.seconds(period / std::max(1.0, ctx_.opt.attackRate)), [this] { tick(); });
}

void SquatAttack::stop() {
    running_ = false;
    for (Squatter& s : squatters_) {
        s.conn->close();
        s.open = false;
    }
}
