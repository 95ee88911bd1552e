#include "AiRecords.h"
#include "AttackBatches.h"
#include "Context.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string_view>
#include <vector>

namespace {

std::vector<std::string_view> messages(std::string_view bytes) {
    std::vector<std::string_view> out;
    for (size_t at; (at = bytes.find('\0')) != std::string_view::npos; bytes.remove_prefix(at + 1))
        out.push_back(bytes.substr(0, at));
    EXPECT_TRUE(bytes.empty()) << "a batch ends on a NUL";
    return out;
}

} // namespace

// The floods are as heavy as described: whole messages of the stated size, nothing else.
TEST(AttackBatchesTest, FloodsAreWholeMessagesOfTheStatedShape) {
    const std::string sims = attackbatch::simnew(25);
    EXPECT_EQ(sims.size(), 25u * 14);
    for (auto m : messages(sims))
        EXPECT_EQ(m, "SIMNEWh@32767");

    const std::string regs = attackbatch::validr(30000, 99990);
    EXPECT_EQ(regs.size(), 30000u * 13);
    const auto names = messages(regs);
    ASSERT_EQ(names.size(), 30000u);
    EXPECT_EQ(names.front(), "VALIDRH99990");
    EXPECT_EQ(names[10], "VALIDRH00000"); // five digits, wrapping

    const std::string gets = attackbatch::repeated("ERRGET", "1", 100);
    EXPECT_EQ(messages(gets), std::vector<std::string_view>(100, "ERRGET1"));
    EXPECT_EQ(messages(attackbatch::repeated("NAWACS", "", 3)), std::vector<std::string_view>(3, "NAWACS"));
}

// The conversion ends a record with what follows the first 3 characters of its bottom line,
// the 60th character aside: for the last record that is a NUL and then DISCON.
TEST(AttackBatchesTest, AiUpdateHidesDisconBehindANulInItsLastRecord) {
    const std::string update = attackbatch::aiUpdateWithNul(4);
    ASSERT_EQ(update.size(), 4 * airecords::kRecordChars);
    for (size_t r = 0; r < 4; ++r) {
        const std::string_view record = std::string_view(update).substr(r * 60, 60);
        EXPECT_NE(record.find("12*" + std::string(airecords::kHostileName) + "\r\n"), std::string_view::npos);
        EXPECT_EQ(record.back(), '\n');
        const size_t bottom = record.rfind('\n', 58) + 1;
        const std::string_view value = record.substr(bottom + 3, 59 - bottom - 3);
        if (r < 3)
            EXPECT_EQ(value.find('\0'), std::string_view::npos);
        else
            EXPECT_EQ(value, std::string_view("\0DISCON", 7));
    }
    EXPECT_EQ(std::count(update.begin(), update.end(), '\0'), 1);
}

// What a well-behaved peer may receive: the server's own commands on each port; DISCON (the AI
// Spy: CLOSE1) only once the server was asked to stop.
TEST(ScreenTest, CountsInjectedMessagesAndShutdownNoticesApart) {
    Context ctx{Options{}};
    ctx.screen(Port::Awacs, "INDATA3@P1#2#3");
    ctx.screen(Port::Awacs, "AILOCAHOSTILE   000000");
    ctx.screen(Port::Player, "PLSNEW1@Pilot1@@-");
    ctx.screen(Port::Player, "SIMNUM4");
    ctx.screen(Port::Sim, "SYNCRO");
    ctx.screen(Port::Ai, "SYNCRO");
    EXPECT_EQ(ctx.anomalies.injected, 0u);

    ctx.screen(Port::Awacs, "DISCON");
    ctx.screen(Port::Awacs, "PLSNEW1@Pilot1@@-"); // a player message on the AWACS port
    ctx.screen(Port::Sim, "INDATA1@x");
    ctx.screen(Port::Ai, "DISCON");
    ctx.screen(Port::Player, "");
    EXPECT_EQ(ctx.anomalies.injected, 5u);
    EXPECT_EQ(ctx.shutdownNotices, 0u);

    ctx.stopping = true;
    ctx.screen(Port::Player, "DISCON");
    ctx.screen(Port::Awacs, "DISCON");
    ctx.screen(Port::Ai, "CLOSE1");
    EXPECT_EQ(ctx.shutdownNotices, 3u);
    EXPECT_EQ(ctx.anomalies.injected, 5u);
}
