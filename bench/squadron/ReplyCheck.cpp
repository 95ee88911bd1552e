#include "ReplyCheck.h"

#include <charconv>
#include <vector>

namespace {

std::vector<std::string_view> fields(std::string_view s) {
    std::vector<std::string_view> out;
    for (;;) {
        size_t at = s.find('@');
        out.push_back(s.substr(0, at));
        if (at == std::string_view::npos) return out;
        s.remove_prefix(at + 1);
    }
}

int toInt(std::string_view s) {
    int v = -1;
    auto [p, ec] = std::from_chars(s.data(), s.data() + s.size(), v);
    return ec == std::errc() && p == s.data() + s.size() ? v : -1;
}

} // namespace

void ReplyCheck::expect(Kind kind, int position, int expectedCount, std::string expectedMark) {
    kind_ = kind;
    stage_ = count_ = next_ = 0;
    position_ = position;
    expectedCount_ = expectedCount;
    expectedMark_ = std::move(expectedMark);
    shifted_ = false;
}

void ReplyCheck::reset() {
    kind_ = Kind::None;
    ownPosition_ = setupCount_ = lineCount_ = 0;
}

ReplyCheck::Result ReplyCheck::finish(bool ok) {
    kind_ = Kind::None;
    return ok ? Result::Ok : Result::Bad;
}

ReplyCheck::Result ReplyCheck::feed(std::string_view command, std::string_view data) {
    auto f = fields(data);
    auto strayOne = [&] {
        ++stray_;
        return Result::Pending;
    };
    if (command == "PLSNEW" || command == "PLSUPD") {
        if (f.size() != 4 || f[1] != own_) return Result::Pending;
        if (command == "PLSNEW") ownPosition_ = toInt(f[0]);
        if (command == "PLSNEW" && kind_ == Kind::Register) return finish(f[3] == "-");
        if (command == "PLSUPD" && kind_ == Kind::Verdict) return finish(f[3] == expectedMark_);
        return Result::Pending;
    }
    if (command == "PLSDEL") {
        int gone = toInt(data);
        if (gone > 0 && gone < ownPosition_) --ownPosition_;
        shifted_ = true;
        return Result::Pending;
    }
    if (command == "AWANUM") {
        if (kind_ == Kind::PlayerList && stage_ == 2) return finish(toInt(data) >= 0);
        return Result::Pending; // the broadcast of a new count
    }
    if (command == "PLRDIM" || command == "SLRDIM" || command == "VLRDIM") {
        Kind want = command == "PLRDIM"   ? Kind::PlayerList
                    : command == "SLRDIM" ? Kind::SetupList
                                          : Kind::Setup;
        if (kind_ != want || stage_ != 0) return strayOne();
        count_ = toInt(data);
        if (count_ < 0) return finish(false);
        if (want == Kind::SetupList) setupCount_ = count_;
        if (want == Kind::Setup) lineCount_ = count_;
        next_ = 1;
        stage_ = 1;
        return Result::Pending;
    }
    if (command == "PLSADD" || command == "SLSADD" || command == "VLSADD") {
        Kind want = command == "PLSADD"   ? Kind::PlayerList
                    : command == "SLSADD" ? Kind::SetupList
                                          : Kind::Setup;
        if (kind_ != want) return strayOne();
        if (stage_ != 1 || next_ > count_ || toInt(f[0]) != next_ || f.size() < 2) return finish(false);
        if (want == Kind::PlayerList && f.size() == 4 && f[1] == own_) ownPosition_ = next_;
        ++next_;
        return Result::Pending;
    }
    if (command == "PLDONE" || command == "SLDONE" || command == "VLDONE") {
        Kind want = command == "PLDONE"   ? Kind::PlayerList
                    : command == "SLDONE" ? Kind::SetupList
                                          : Kind::Setup;
        if (kind_ != want) return strayOne();
        bool whole = stage_ == 1 && next_ == count_ + 1;
        if (want == Kind::PlayerList && whole) {
            stage_ = 2; // AWANUM follows
            return Result::Pending;
        }
        return finish(whole);
    }
    if (command == "ERRRDM" || command == "ERRADD" || command == "ERRDON") {
        if (kind_ != Kind::ErrorList) return strayOne();
        if (f.empty() || toInt(f[0]) != position_) return finish(false);
        if (command == "ERRRDM") {
            if (stage_ != 0 || f.size() != 2 || (count_ = toInt(f[1])) < 0) return finish(false);
            if (expectedCount_ >= 0 && !shifted_ && count_ != expectedCount_) return finish(false);
            next_ = 1;
            stage_ = 1;
            return Result::Pending;
        }
        if (command == "ERRADD") {
            if (stage_ != 1 || f.size() < 3 || toInt(f[1]) != next_ || next_ > count_) return finish(false);
            ++next_;
            return Result::Pending;
        }
        // A position that is no longer listed gets the closing message alone.
        return finish(stage_ == 1 ? next_ == count_ + 1 : shifted_);
    }
    return Result::Pending;
}
