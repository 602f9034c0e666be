// What a counterparty can make a session keep and do.
#include "server/sessions/GapCount.h"
#include "server/sessions/ResendPlan.h"
#include "server/sessions/StoredPair.h"

#include <gtest/gtest.h>

#include <new>
#include <thread>

namespace {

using namespace zan::server;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

std::size_t countOf(SessionRecorder const& recorder, std::string const& part) {
    return recorder.linesWith(part).size();
}

TEST(Flood, EndsTheLinkWhereAGapIsNeverFilled) {
    StoredPair tested;
    RawPair& pair = tested.pair;
    ASSERT_TRUE(pair.logOn());
    ++pair.peer.number;
    std::string const padding(4 * 1024 * 1024, 'x');
    for (std::size_t sent = 0; sent < GapCount::mostBytes + padding.size(); sent += padding.size())
        pair.peer.send("B", "148=late|58=" + padding + "|");
    ASSERT_TRUE(pair.ours.waitFor("down", 1, 60s));
    std::string const reason =
        "the message with number 2 is missing, and the 32 that came after it "
        "take more than 128 MiB; the link is ended";
    EXPECT_EQ(countOf(pair.ours, "! session " + reason), 1u);
    EXPECT_EQ(countOf(pair.ours, "# " + reason), 1u);
    EXPECT_EQ(pair.us->nextTargetNumber(), 2);
}

TEST(Flood, CountsNothingOfAGapThatWasFilled) {
    RawPair pair;
    ASSERT_TRUE(pair.logOn());
    std::string const padding(4 * 1024 * 1024, 'x');
    for (int round = 0; round < 7; ++round) {
        std::string const missing = pair.peer.framed("B", "148=first|");
        for (int i = 0; i < 5; ++i)
            pair.peer.send("B", "148=late|58=" + padding + "|");
        pair.peer.sendBytes(missing);
        ASSERT_TRUE(pair.ours.waitFor("|148=late|", static_cast<std::size_t>(round + 1) * 5, 60s));
    }
    EXPECT_EQ(countOf(pair.ours, "down"), 0u);
}

TEST(Flood, EndsTheLinkAloneWhereMemoryIsMissing) {
    RawPair pair(Keys{{"ReconnectInterval", "1"}});
    bool isScarce = true;
    pair.ours.onReceived([&](std::string const& message) {
        if (isScarce && fixValue(message, 35) == "B") {
            isScarce = false;
            throw std::bad_alloc();
        }
    });
    ASSERT_TRUE(pair.logOn());
    pair.peer.send("B", "148=too much|");
    ASSERT_TRUE(pair.ours.waitFor("down"));
    EXPECT_EQ(countOf(pair.ours, "! session there is no memory for what came in"), 1u);
    EXPECT_TRUE(pair.peer.logOn()) << pair.ours.all();
    EXPECT_TRUE(pair.ours.waitFor("on", 2));
}

// The number of messages that the peer gets again before it gets the last word.
class ResendFlood : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(tested.logOn());
        for (int i = 0; i < count; ++i)
            ASSERT_EQ(tested.send("title"), FixSendResult::sent);
    }

    void flood(int requests, std::string const& range) {
        std::string bytes;
        for (int i = 0; i < requests; ++i)
            bytes += tested.pair.peer.framed("2", range);
        std::thread([&] { tested.pair.peer.sendBytes(bytes); }).join();
    }

    std::size_t repeated() const {
        std::size_t found = 0;
        for (FixEntry const& entry : tested.pair.ours.entries())
            found += entry.origin == FixOrigin::again && entry.stream == FixStream::resent ? 1 : 0;
        return found;
    }

    static constexpr int count = 1000;
    StoredPair tested;
};

TEST_F(ResendFlood, IsAnsweredOnceAndInTurnsWithSends) {
    std::thread reader([&] {
        while (tested.pair.peer.waitFor("B").find("|148=the end|") == std::string::npos) {
        }
    });
    flood(2000, "7=1|16=0|");
    auto longest = Clock::duration::zero();
    for (int i = 0; i < 50; ++i) {
        auto const start = Clock::now();
        ASSERT_EQ(tested.send("title"), FixSendResult::sent);
        longest = std::max(longest, Clock::now() - start);
        std::this_thread::sleep_for(10ms);
    }
    ASSERT_TRUE(tested.pair.ours.waitFor("|35=2|", 2000, 30s));
    std::this_thread::sleep_for(500ms);
    EXPECT_EQ(tested.send("the end"), FixSendResult::sent);
    reader.join();
    EXPECT_GE(repeated(), static_cast<std::size_t>(count));
    EXPECT_LE(repeated(), static_cast<std::size_t>(4 * ResendPlan::mostRepeated));
    EXPECT_LT(longest, 1s);
    RecordProperty("longest_send_micros", static_cast<int>(longest / std::chrono::microseconds(1)));
    RecordProperty("repeated", static_cast<int>(repeated()));
}

TEST_F(ResendFlood, IsAnsweredInSlicesOfFewBytes) {
    std::string const big(300 * 1024, 'x');
    for (int i = 0; i < 20; ++i)
        ASSERT_EQ(tested.send(big), FixSendResult::sent);
    std::thread reader([&] {
        while (tested.pair.peer.waitFor("B").find("|148=the end|") == std::string::npos) {
        }
    });
    int const commits = tested.store.commits;
    flood(1, "7=1002|16=0|");
    ASSERT_TRUE(tested.pair.ours.waitFor("|43=Y|", 20));
    EXPECT_GE(tested.store.commits - commits, 5);
    tested.send("the end");
    reader.join();
}

// The end of a slice is no end of a gap: a counterparty that has a part of it already would pass
// over the rest.
TEST_F(ResendFlood, IsToldOfALongGapAtOnce) {
    int const beats = ResendPlan::sliceLength * 2 + 100;
    std::thread peer([&] {
        for (int i = 0; i < beats; ++i) {
            tested.pair.peer.send("1", "112=are you there|");
            ASSERT_FALSE(tested.pair.peer.waitFor("0").empty());
        }
    });
    peer.join();
    ASSERT_EQ(tested.send("the end"), FixSendResult::sent);
    int const last = count + 1 + beats + 1;
    flood(1, "7=" + std::to_string(count) + "|16=0|");
    std::string const gap = tested.pair.peer.waitFor("4");
    EXPECT_NE(gap.find("|34=" + std::to_string(count + 2) + "|"), std::string::npos) << gap;
    EXPECT_NE(gap.find("|36=" + std::to_string(last) + "|"), std::string::npos) << gap;
    EXPECT_NE(tested.pair.peer.waitFor("B").find("|148=the end|"), std::string::npos);
}

// A request after the other, each for something else, backwards, beyond the end, and for all.
TEST_F(ResendFlood, OfOddRequestsLeavesTheSessionAsItWas) {
    std::string bytes;
    for (int i = 0; i < 300; ++i) {
        std::string const first = std::to_string(1 + i * 7 % 1200);
        std::string const last = std::to_string(i % 3 == 0 ? 0 : i * 13 % 1500);
        bytes += tested.pair.peer.framed("2", "7=" + first + "|16=" + last + "|");
    }
    std::thread reader([&] {
        while (tested.pair.peer.waitFor("B").find("|148=the end|") == std::string::npos) {
        }
    });
    tested.pair.peer.sendBytes(bytes);
    ASSERT_TRUE(tested.pair.ours.waitFor("|35=2|", 300, 30s));
    EXPECT_EQ(tested.send("the end"), FixSendResult::sent);
    reader.join();
    EXPECT_EQ(tested.pair.us->nextSenderNumber(), count + 3);
    EXPECT_TRUE(tested.pair.us->isLoggedOn());
}

TEST(Flood, OfTestRequestsIsAnsweredOneByOne) {
    RawPair pair;
    ASSERT_TRUE(pair.logOn());
    std::string bytes;
    for (int i = 0; i < 5000; ++i)
        bytes += pair.peer.framed("1", "112=" + std::to_string(i) + "|");
    std::thread sender([&] { pair.peer.sendBytes(bytes); });
    std::string last;
    while (last.find("|112=4999|") == std::string::npos) {
        last = pair.peer.waitFor("0");
        ASSERT_FALSE(last.empty());
    }
    sender.join();
    EXPECT_TRUE(pair.us->isLoggedOn());
}

TEST(Flood, OfRequestsByAPeerThatDoesNotReadEndsTheLink) {
    RawPair pair;
    pair.us->start({});
    ASSERT_TRUE(pair.peer.accept(4096));
    ASSERT_FALSE(pair.peer.waitFor("A").empty());
    pair.peer.send("A", "98=0|108=5|");
    ASSERT_TRUE(pair.ours.waitFor("on"));
    std::string const id(64 * 1024, 'x');
    for (int i = 0; i < 400 && countOf(pair.ours, "down") == 0; ++i)
        pair.peer.send("1", "112=" + id + "|");
    EXPECT_TRUE(pair.ours.waitFor("down", 1, 30s));
    EXPECT_EQ(countOf(pair.ours, "! session the counterparty does not read"), 1u);
}

// Each further field would cost more than the one before it, were they all kept in their order.
TEST(Flood, OfFieldsInOneMessageIsPassedOver) {
    RawPair pair;
    ASSERT_TRUE(pair.logOn());
    std::string fields;
    for (int tag = 900000; tag > 5000 && fields.size() < 8 * 1024 * 1024; --tag)
        fields += std::to_string(tag) + "=1|";
    pair.peer.send("1", "112=first|" + fields);
    EXPECT_NE(pair.peer.waitFor("0").find("|112=first|"), std::string::npos);
}

} // namespace
