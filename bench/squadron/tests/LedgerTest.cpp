#include "Ledger.h"

#include <gtest/gtest.h>

namespace {
constexpr int64_t kMargin = 100;
}

// One stream of 10 messages sent at t = 1000, 1100, ..., 1900, seen by receivers that were
// listed for the whole run, for part of it, or not at all.
TEST(LedgerTest, OwesOnlyWhatWasSentWhileBothEndsWerePresent) {
    Ledger ledger(kMargin, kMargin);
    const int stream = ledger.openStream(1000);
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(ledger.recordSent(stream, 1000 + 100 * i), uint32_t(i + 1));
    ledger.closeStream(stream, 1950);

    const int whole = ledger.openReceiver(0);
    for (uint32_t s = 1; s <= 10; ++s)
        ledger.recordReceived(whole, stream, s);
    auto t = ledger.totalsFor(whole, Ledger::kOpenEnd);
    EXPECT_EQ(t.owed, 10u);
    EXPECT_EQ(t.received, 10u);
    EXPECT_EQ(t.missing(), 0u);

    // Listed at 1250 (owed from 1350: messages 5..), left at 1750 (owed up to 1650: ..7).
    const int part = ledger.openReceiver(1250);
    ledger.closeReceiver(part, 1750);
    ledger.recordReceived(part, stream, 4); // early ones are welcome but not owed
    ledger.recordReceived(part, stream, 5);
    ledger.recordReceived(part, stream, 7);
    t = ledger.totalsFor(part, Ledger::kOpenEnd);
    EXPECT_EQ(t.owed, 3u);
    EXPECT_EQ(t.received, 2u);
    EXPECT_EQ(t.missingOther, 1u);

    // A receiver listed after the stream ended is owed nothing.
    EXPECT_EQ(ledger.totalsFor(ledger.openReceiver(5000), Ledger::kOpenEnd).owed, 0u);

    // The cutoff leaves out what was sent after it (a report in the middle of the run).
    EXPECT_EQ(ledger.totalsFor(whole, 1450).owed, 5u);
}

TEST(LedgerTest, SplitWritesExcuseTheirOwnLossOnlyAndRepeatsAreCounted) {
    Ledger ledger(0, 0);
    const int stream = ledger.openStream(0);
    for (int i = 1; i <= 6; ++i)
        ledger.recordSent(stream, i);
    ledger.markSplit(stream, 5);
    ledger.markSplit(stream, 2);
    ledger.markSplit(stream, 5);
    const int r = ledger.openReceiver(0);
    for (uint32_t s : {1u, 3u, 4u, 6u})
        ledger.recordReceived(r, stream, s);
    ledger.recordReceived(r, stream, 6); // again
    ledger.recordReceived(r, stream, 3); // late
    auto t = ledger.totalsFor(r, Ledger::kOpenEnd);
    EXPECT_EQ(t.owed, 6u);
    EXPECT_EQ(t.received, 4u);
    EXPECT_EQ(t.missingSplit, 2u);
    EXPECT_EQ(t.missingOther, 0u);
    EXPECT_EQ(t.dupReorder, 2u);

    // A split message that arrived anyway is no excuse for another loss.
    const int other = ledger.openReceiver(0);
    for (uint32_t s : {1u, 2u, 3u, 6u})
        ledger.recordReceived(other, stream, s);
    t = ledger.totalsFor(other, Ledger::kOpenEnd);
    EXPECT_EQ(t.missingSplit, 1u); // 5
    EXPECT_EQ(t.missingOther, 1u); // 4
    EXPECT_EQ(ledger.totals(Ledger::kOpenEnd).missing(), 4u);
}
