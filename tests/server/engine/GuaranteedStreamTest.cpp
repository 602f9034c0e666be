#include "server/engine/GuaranteedStream.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using namespace zan::server;
using namespace std::chrono_literals;

class GuaranteedStreamTest : public testing::Test {
protected:
    static FixEntry entry(long id) {
        FixEntry made;
        made.id = id;
        made.stream = FixStream::appIn;
        return made;
    }

    GuaranteedStream stream{"desk", std::make_shared<MessageFilter>()};
    GuaranteedStream::Clock::time_point const now{};
};

TEST_F(GuaranteedStreamTest, IsUpToDateAtFirst) {
    EXPECT_FALSE(stream.isBehind());
    EXPECT_FALSE(stream.failure());
    EXPECT_FALSE(stream.isDue(now + 1h));
}

TEST_F(GuaranteedStreamTest, StopsBeforeTheMessageThatFailed) {
    stream.stopBefore(entry(7), "boom", true, now);
    EXPECT_TRUE(stream.isBehind());
    EXPECT_EQ(stream.next(), 7);
    EXPECT_EQ(stream.shownUpTo(), 7);
    ASSERT_TRUE(stream.failure());
    EXPECT_EQ(stream.failure()->id, 7);
    EXPECT_EQ(stream.failure()->stream, FixStream::appIn);
    EXPECT_EQ(stream.failure()->reason, "boom");
    EXPECT_EQ(stream.failure()->times, 1);
}

TEST_F(GuaranteedStreamTest, WaitsLongerAfterEachFailureOnTheSameMessage) {
    std::vector<std::chrono::milliseconds> pauses;
    for (int i = 0; i < 10; ++i) {
        pauses.push_back(stream.stopBefore(entry(7), "boom", true, now));
        EXPECT_FALSE(stream.isDue(now + pauses.back() - 1ms));
        EXPECT_TRUE(stream.isDue(now + pauses.back()));
    }
    EXPECT_EQ(pauses, (std::vector<std::chrono::milliseconds>{250ms, 500ms, 1s, 2s, 4s, 8s, 16s,
                                                              30s, 30s, 30s}));
    EXPECT_EQ(stream.stopBefore(entry(8), "boom", true, now), 250ms);
}

TEST_F(GuaranteedStreamTest, HasNotShownAMessageThatCouldNotBeMade) {
    stream.stopBefore(entry(7), "no memory", false, now);
    EXPECT_EQ(stream.next(), 7);
    EXPECT_EQ(stream.shownUpTo(), 6);
}

TEST_F(GuaranteedStreamTest, SettlesAFailureWhenItGetsPastIt) {
    stream.stopBefore(entry(7), "boom", true, now);
    EXPECT_FALSE(stream.advanceTo(7));
    EXPECT_TRUE(stream.failure());
    EXPECT_TRUE(stream.advanceTo(8));
    EXPECT_FALSE(stream.failure());
    EXPECT_TRUE(stream.isBehind());
    stream.catchUp();
    EXPECT_FALSE(stream.isBehind());
}

TEST_F(GuaranteedStreamTest, MayBeAskedToGoOnBeforeThePauseIsOver) {
    stream.stopBefore(entry(7), "boom", true, now);
    EXPECT_FALSE(stream.isDue(now));
    stream.hurry(now);
    EXPECT_TRUE(stream.isDue(now));
}

TEST_F(GuaranteedStreamTest, StartsOverWithoutMakingOldOfWhatIsNew) {
    stream.startOver(3, 9);
    EXPECT_EQ(stream.next(), 3);
    EXPECT_EQ(stream.shownUpTo(), 9);
    stream.catchUp();
    stream.stopBefore(entry(7), "boom", true, now);
    stream.startOver(3, 9);
    EXPECT_EQ(stream.next(), 3);
    EXPECT_EQ(stream.shownUpTo(), 7) << "the listener has not had 8 and 9";
}

} // namespace
