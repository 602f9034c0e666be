#include "comfort/Signal.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace {

using std::chrono::milliseconds;
using std::chrono::minutes;

TEST(Signal, IsNotSeenBeforeItIsRaised) {
    zan::Signal signal;
    EXPECT_FALSE(signal.waitFor(milliseconds(0)));
    EXPECT_FALSE(signal.waitFor(milliseconds(5)));
}

TEST(Signal, IsSeenByWhoeverWaitsLater) {
    zan::Signal signal;
    signal.raise();
    EXPECT_TRUE(signal.waitFor(milliseconds(0)));
    EXPECT_TRUE(signal.waitFor(milliseconds(0)));
}

TEST(Signal, MayBeRaisedAgain) {
    zan::Signal signal;
    signal.raise();
    signal.raise();
    EXPECT_TRUE(signal.waitFor(milliseconds(0)));
}

TEST(Signal, EndsTheWaitOfAnotherThread) {
    zan::Signal signal;
    std::thread other([&] { signal.raise(); });
    EXPECT_TRUE(signal.waitFor(minutes(1)));
    other.join();
}

} // namespace
