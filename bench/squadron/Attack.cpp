#include "Attack.h"

#include "BigReadAttack.h"
#include "ChurnAttack.h"
#include "FloodAttack.h"
#include "SquatAttack.h"
#include "VanishAttack.h"

#include <array>
#include <string_view>

namespace {

struct Entry {
    std::string_view name;
    FloodAttack::Kind kind; // for the flood attacks
};
constexpr std::array<Entry, 7> kFloods{{{"simnew", FloodAttack::Kind::SimNew},
                                        {"validr", FloodAttack::Kind::Validr},
                                        {"errget", FloodAttack::Kind::ErrGet},
                                        {"nuls", FloodAttack::Kind::Nuls},
                                        {"nawacs", FloodAttack::Kind::Nawacs},
                                        {"getlst-noread", FloodAttack::Kind::GetlstNoRead},
                                        {"aispy-nul", FloodAttack::Kind::AiSpyNul}}};
constexpr std::array<std::string_view, 7> kOthers{"churn",   "bigread", "silent", "one-address",
                                                  "numbers", "names",   "vanish"};

} // namespace

bool isAttackName(const std::string& name) {
    for (const auto& e : kFloods)
        if (e.name == name) return true;
    for (auto n : kOthers)
        if (n == name) return true;
    return false;
}

std::string attackNamesText() {
    std::string s;
    for (const auto& e : kFloods)
        s.append(s.empty() ? "" : " ").append(e.name);
    for (auto n : kOthers)
        s.append(" ").append(n);
    return s;
}

bool attackTakesAiSpy(const std::string& name) {
    return name == "aispy-nul";
}

std::unique_ptr<Attack> makeAttack(Context& ctx, const std::string& name) {
    for (const auto& e : kFloods)
        if (e.name == name) return std::make_unique<FloodAttack>(ctx, e.kind);
    if (name == "churn") return std::make_unique<ChurnAttack>(ctx);
    if (name == "bigread") return std::make_unique<BigReadAttack>(ctx);
    if (name == "silent") return std::make_unique<SquatAttack>(ctx, SquatAttack::Kind::Silent);
    if (name == "one-address") return std::make_unique<SquatAttack>(ctx, SquatAttack::Kind::OneAddress);
    if (name == "numbers") return std::make_unique<SquatAttack>(ctx, SquatAttack::Kind::Numbers);
    if (name == "names") return std::make_unique<SquatAttack>(ctx, SquatAttack::Kind::Names);
    if (name == "vanish") return std::make_unique<VanishAttack>(ctx);
    return nullptr;
}
