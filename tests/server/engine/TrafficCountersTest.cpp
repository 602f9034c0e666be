#include "server/engine/TrafficCounters.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace zan::server;

std::string shown(std::vector<TypeCount> const& counts) {
    std::string text;
    for (TypeCount const& each : counts) {
        text += (text.empty() ? "" : " ") + each.type + ":" + std::to_string(each.count);
    }
    return text;
}

TEST(TypeCounters, CountTheRejectsFromTheBeginning) {
    EXPECT_EQ(shown(TypeCounters().counts()), "3:0 j:0");
}

TEST(TypeCounters, CountEachTypeByItself) {
    TypeCounters counters;
    for (char const* type : {"D", "8", "8", "AE", "j", "UZZZ"}) {
        counters.count(type);
    }
    EXPECT_EQ(shown(counters.counts()), "3:0 j:1 D:1 8:2 AE:1 UZZZ:1");
}

TEST(TypeCounters, CountWhatIsNoTypeWithTheOthers) {
    TypeCounters counters;
    for (char const* type : {"", "a b", "\"", "\n", "longer", "\xff"}) {
        counters.count(type);
    }
    EXPECT_EQ(shown(counters.counts()), "3:0 j:0 other:6");
}

TEST(TypeCounters, CountTypesBeyondTheirBoundWithTheOthers) {
    TypeCounters counters;
    std::size_t const distinct = 1000;
    for (std::size_t i = 0; i < distinct; ++i) {
        counters.count("U" + std::to_string(i));
    }
    counters.count("3");
    std::vector<TypeCount> const counts = counters.counts();
    ASSERT_EQ(counts.size(), TypeCounters::mostTypes + 1);
    EXPECT_EQ(counts.front().count, 1u);
    EXPECT_EQ(counts.back().type, "other");
    EXPECT_EQ(counts.back().count, distinct - (TypeCounters::mostTypes - 2));
}

TEST(TypeCounters, LoseNothingWhenSeveralThreadsCount) {
    TypeCounters counters;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&counters] {
            for (int n = 0; n < 5000; ++n) {
                counters.count("T" + std::to_string(n % 30));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    std::vector<TypeCount> const counts = counters.counts();
    EXPECT_EQ(counts.size(), 32u);
    std::uint64_t total = 0;
    for (TypeCount const& each : counts) {
        total += each.count;
    }
    EXPECT_EQ(total, 20'000u);
}

FixEntry entry(long id, FixStream stream, FixOrigin origin, std::string text) {
    FixEntry made;
    made.id = id;
    made.stream = stream;
    made.origin = origin;
    std::ranges::replace(text, '|', '\x01');
    made.text = std::move(text);
    return made;
}

TEST(TrafficCounters, TellWhatWentOverTheWire) {
    TrafficCounters counters;
    counters.count({entry(1, FixStream::adminOut, FixOrigin::wire, "8=FIX.4.4|35=A|"),
                    entry(2, FixStream::adminIn, FixOrigin::wire, "8=FIX.4.4|35=A|"),
                    entry(3, FixStream::appOut, FixOrigin::wire, "8=FIX.4.4|35=D|"),
                    entry(4, FixStream::appIn, FixOrigin::wire, "8=FIX.4.4|35=8|"),
                    entry(5, FixStream::resent, FixOrigin::again, "8=FIX.4.4|35=D|43=Y|"),
                    entry(6, FixStream::resent, FixOrigin::wire, "8=FIX.4.4|35=D|97=Y|"),
                    entry(7, FixStream::adminOut, FixOrigin::again, "8=FIX.4.4|35=4|123=Y|")});
    TrafficFigures const figures = counters.figures();
    EXPECT_EQ(shown(figures.in), "3:0 j:0 A:1 8:1");
    EXPECT_EQ(shown(figures.out), "3:0 j:0 A:1 D:3 4:1");
    EXPECT_EQ(figures.resentOnRequest, 1u);
    EXPECT_EQ(figures.resentByApplication, 1u);
    EXPECT_EQ(figures.refused, 0u);
    EXPECT_EQ(figures.posted, 0u);
}

TEST(TrafficCounters, TellWhatDidNotGoOverTheWireApart) {
    TrafficCounters counters;
    counters.count({entry(1, FixStream::appIn, FixOrigin::internal, "35=D|"),
                    entry(2, FixStream::appIn, FixOrigin::remark, "35=D|"),
                    entry(3, FixStream::adminOut, FixOrigin::remark, ""),
                    entry(4, FixStream::appIn, FixOrigin::inserted, "35=D|")});
    counters.countListenerFailure();
    TrafficFigures const figures = counters.figures();
    EXPECT_EQ(shown(figures.in), "3:0 j:0");
    EXPECT_EQ(shown(figures.out), "3:0 j:0");
    EXPECT_EQ(figures.posted, 1u);
    EXPECT_EQ(figures.refused, 1u);
    EXPECT_EQ(figures.listenerFailures, 1u);
}

TEST(TrafficCounters, KnowTheNewestMessageForListeners) {
    TrafficCounters counters;
    EXPECT_EQ(counters.newestDelivered(FixStream::appIn), 0);
    counters.count({entry(5, FixStream::appIn, FixOrigin::wire, "35=8|"),
                    entry(6, FixStream::appIn, FixOrigin::remark, "35=8|"),
                    entry(7, FixStream::appOut, FixOrigin::wire, "35=D|")});
    EXPECT_EQ(counters.newestDelivered(FixStream::appIn), 5);
    EXPECT_EQ(counters.newestDelivered(FixStream::appOut), 7);
    EXPECT_EQ(counters.newestDelivered(FixStream::adminIn), 0);
}

} // namespace
