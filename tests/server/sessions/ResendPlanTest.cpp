#include "server/sessions/ResendPlan.h"

#include <gtest/gtest.h>

#include <random>
#include <set>

namespace {

using namespace zan::server;
using namespace std::chrono_literals;
using Clock = ResendPlan::Clock;

bool operator==(NumberRange const& one, NumberRange const& other) {
    return one.first == other.first && one.last == other.last;
}

TEST(NumberRanges, AreTheNumbersThatWereAddedAndNotRemoved) {
    std::mt19937 random(1);
    NumberRanges ranges;
    std::set<int> numbers;
    for (int step = 0; step < 2000; ++step) {
        int const first = static_cast<int>(random() % 60);
        int const last = first + static_cast<int>(random() % 10);
        bool const isAdded = random() % 2 == 0;
        isAdded ? ranges.add({first, last}) : ranges.remove({first, last});
        for (int number = first; number <= last; ++number)
            isAdded ? (void)numbers.insert(number) : (void)numbers.erase(number);
        for (int number = -1; number < 75; ++number)
            ASSERT_EQ(ranges.has(number), numbers.count(number) == 1) << number;
        ASSERT_EQ(ranges.isEmpty(), numbers.empty());
        if (!numbers.empty()) {
            ASSERT_EQ(ranges.front().first, *numbers.begin());
        }
    }
}

TEST(NumberRanges, StayFewHoweverScatteredTheNumbersAre) {
    NumberRanges ranges;
    for (int number = 1; number < 100000; number += 2)
        ranges.add({number, number});
    std::size_t count = 0;
    for (; !ranges.isEmpty(); ++count)
        ranges.remove(ranges.front());
    EXPECT_EQ(count, NumberRanges::mostRanges);
}

class ResendPlans : public testing::Test {
protected:
    // Everything that is due at that time, up to so many messages.
    int sendAll(Clock::time_point now, int most = 1000000) {
        int count = 0;
        while (count < most && plan.isDue(now)) {
            NumberRange const slice = plan.slice();
            EXPECT_LE(slice.last - slice.first, ResendPlan::sliceLength - 1);
            plan.sent(slice, now);
            count += slice.last - slice.first + 1;
        }
        return count;
    }

    ResendPlan plan;
    Clock::time_point const start = Clock::now();
};

TEST_F(ResendPlans, SendInSlices) {
    plan.want({1, 1200});
    ASSERT_TRUE(plan.isDue(start));
    EXPECT_TRUE(plan.slice() == (NumberRange{1, 500}));
    plan.sent({1, 500}, start);
    EXPECT_TRUE(plan.slice() == (NumberRange{501, 1000}));
    plan.sent({501, 700}, start); // the bytes were enough
    EXPECT_TRUE(plan.slice() == (NumberRange{701, 1200}));
    plan.sent({701, 1200}, start);
    EXPECT_TRUE(plan.isEmpty());
}

TEST_F(ResendPlans, AnswerRequestsThatOverlapOnce) {
    for (int first = 1; first <= 500; ++first)
        plan.want({first, 2000});
    EXPECT_EQ(sendAll(start), 2000);
}

TEST_F(ResendPlans, WaitBeforeTheyRepeat) {
    plan.want({1, 100});
    EXPECT_EQ(sendAll(start), 100);
    plan.want({1, 100});
    plan.want({50, 120});
    EXPECT_EQ(sendAll(start + 10ms), 0);
    EXPECT_EQ(sendAll(start + 200ms), 120);
    EXPECT_TRUE(plan.isEmpty());
}

TEST_F(ResendPlans, RepeatAtALimitedRate) {
    plan.want({1, 50000});
    EXPECT_EQ(sendAll(start), 50000);
    plan.want({1, 50000});
    auto now = start + 1s;
    EXPECT_EQ(sendAll(now), ResendPlan::mostRepeated);
    EXPECT_EQ(sendAll(now), 0);
    now += 1s;
    EXPECT_NEAR(sendAll(now), ResendPlan::repeatedEachSecond, 2);
    int sent = 0;
    for (; !plan.isEmpty(); sent += sendAll(now))
        now += 1s;
    EXPECT_NEAR(sent, 50000 - ResendPlan::mostRepeated - ResendPlan::repeatedEachSecond, 2);
}

TEST_F(ResendPlans, SendWhatIsNewAtOnceThoughOtherThingsWait) {
    plan.want({1, 100});
    EXPECT_EQ(sendAll(start), 100);
    plan.want({101, 200});
    EXPECT_EQ(sendAll(start), 100);
}

TEST_F(ResendPlans, SendWhatWasSentTogetherWithWhatIsNew) {
    plan.want({1, 10});
    EXPECT_EQ(sendAll(start), 10);
    plan.want({10, 13});
    ASSERT_FALSE(plan.isDue(start + 10ms));
    ASSERT_TRUE(plan.isDue(start + 200ms));
    EXPECT_TRUE(plan.slice() == (NumberRange{10, 13}));
    EXPECT_TRUE(plan.isEnd(13));
}

TEST_F(ResendPlans, LookForTheEndOfALongGapPieceByPiece) {
    plan.want({1, 1200});
    ASSERT_TRUE(plan.isDue(start));
    EXPECT_FALSE(plan.isEnd(500));
    plan.gapTo(500);
    ASSERT_TRUE(plan.isDue(start));
    EXPECT_TRUE(plan.slice() == (NumberRange{1, 1000}));
    EXPECT_EQ(plan.firstToRead(), 501);
    plan.sent({1, 700}, start);
    EXPECT_TRUE(plan.slice() == (NumberRange{701, 1200}));
    EXPECT_EQ(plan.firstToRead(), 701);
    plan.gapTo(1100);
    EXPECT_TRUE(plan.slice() == (NumberRange{701, 1200}));
    EXPECT_EQ(plan.firstToRead(), 1101);
    EXPECT_TRUE(plan.isEnd(1200));
}

TEST_F(ResendPlans, ReadAFurtherTimeWhatWasAGapInAnotherNumbering) {
    plan.want({1, 1200});
    ASSERT_TRUE(plan.isDue(start));
    plan.gapTo(500);
    plan.forgetFrom(3);
    plan.want({1, 20});
    EXPECT_EQ(plan.firstToRead(), 1);
    EXPECT_TRUE(plan.slice() == (NumberRange{1, 20}));
}

TEST_F(ResendPlans, BeginAnewWhereARequestBegins) {
    plan.want({1, 100});
    plan.want({41, 120});
    EXPECT_TRUE(plan.slice() == (NumberRange{1, 40}));
    EXPECT_TRUE(plan.isEnd(40));
    plan.sent({1, 40}, start);
    EXPECT_TRUE(plan.slice() == (NumberRange{41, 120}));
    plan.sent({41, 120}, start);
    plan.want({1, 120});
    ASSERT_TRUE(plan.isDue(start + 200ms));
    EXPECT_TRUE(plan.slice() == (NumberRange{1, 120}));
}

TEST_F(ResendPlans, BeginAnewAtAFurtherResendRequestOfOurs) {
    plan.asked(2);
    plan.asked(5);
    plan.want({1, 10});
    EXPECT_TRUE(plan.slice() == (NumberRange{1, 4}));
    plan.sent({1, 4}, start);
    EXPECT_TRUE(plan.slice() == (NumberRange{5, 10}));
    plan.clear();
    plan.asked(5);
    plan.want({1, 10});
    EXPECT_TRUE(plan.slice() == (NumberRange{1, 10}));
}

TEST_F(ResendPlans, ForgetNumbersThatAreNotUsedAnyMore) {
    plan.want({1, 100});
    plan.forgetFrom(11);
    EXPECT_EQ(sendAll(start), 10);
}

} // namespace
