#include "crash/Round.h"

#include <gtest/gtest.h>

#include <iostream>

namespace {

void expectNothingLost(crash::RoundSettings const& settings) {
    crash::Report const report = crash::Round(settings).run();
    std::cout << "durability " << settings.durability << ", seed " << settings.seed << "\n"
              << report.table();
    EXPECT_TRUE(report.isGood());
    EXPECT_EQ(report.kills, settings.kills);
    // Otherwise nothing was tried.
    EXPECT_GT(report.acknowledged, 0);
    EXPECT_GT(report.reports, 0);
    EXPECT_GT(report.redelivered, 0);
    EXPECT_GT(report.posts, 0);
    EXPECT_GT(report.edits, 0);
}

TEST(Crash, LosesNothingAndDoublesNothing) {
    expectNothingLost({6, "normal", 20261121});
}

TEST(Crash, LosesNothingWhenNumbersAreReset) {
    expectNothingLost({5, "normal", 20261123, true});
}

TEST(Crash, LosesNothingWithFullDurability) {
    expectNothingLost({4, "full", 20261122});
}

} // namespace
