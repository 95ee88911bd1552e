#include "basics/RepeatSummary.h"

namespace {
constexpr int kSummaryMs = 1000;
// Lines a kind may tell in a second before it is counted instead: room for an honest burst
// (a squadron behind one router joining at once).
constexpr int kLinesPerSecond = 8;
// Past this many kinds in one second (a flood from many addresses), further kinds are counted
// under one: the bookkeeping stays small whatever arrives.
constexpr int kMaxKinds = 64;
const QString kOtherKinds = QStringLiteral("events of other sources");
} // namespace

RepeatSummary::RepeatSummary(const QLoggingCategory& (*category)(), QObject* parent)
    : QObject(parent), category_(category) {
    second_.setSingleShot(true);
    second_.setInterval(kSummaryMs);
    connect(&second_, &QTimer::timeout, this, &RepeatSummary::flush);
}

RepeatSummary::~RepeatSummary() {
    flush();
}

void RepeatSummary::note(const QString& kind, const QString& line) {
    auto found = kinds_.find(kind);
    if (found == kinds_.end()) {
        if (kinds_.size() >= kMaxKinds) {
            ++kinds_[kOtherKinds].counted;
            return;
        }
        found = kinds_.insert(kind, Kind{});
    }
    if (!second_.isActive()) second_.start();
    if (found->hot || found->told >= kLinesPerSecond) {
        ++found->counted;
        return;
    }
    ++found->told;
    qCInfo(category_).noquote() << line;
}

// A kind that was counted stays hot for another second, so a lasting flood is one line a
// second; a kind that went quiet is forgotten, and its next events are told again.
void RepeatSummary::flush() {
    for (auto it = kinds_.begin(); it != kinds_.end();) {
        if (it->counted == 0) {
            it = kinds_.erase(it);
            continue;
        }
        qCInfo(category_).noquote()
            << QString("%1: %2 more in the last second").arg(it.key()).arg(it->counted);
        *it = Kind{0, 0, true};
        ++it;
    }
    if (!kinds_.isEmpty()) second_.start();
}
