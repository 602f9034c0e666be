#include "server/sessions/FixFramer.h"

#include "support/Wire.h"

#include <gtest/gtest.h>

#include <chrono>
#include <vector>

namespace {

using zan::server::FixFramer;

// `|` becomes SOH.
std::string const heartbeat = onTheWire("8=FIX.4.4|9=5|35=0|10=163|");

// Everything that comes out of these bytes: whole messages, and `!` for each drop.
std::vector<std::string> cut(FixFramer& framer, std::string const& bytes) {
    std::vector<std::string> found;
    std::string message;
    std::string fault;
    framer.append(bytes.data(), bytes.size());
    for (;;) {
        FixFramer::Result const result = framer.next(message, fault);
        if (result == FixFramer::Result::incomplete)
            return found;
        found.push_back(result == FixFramer::Result::message ? message : "! " + fault);
    }
}

TEST(FixFramer, TakesWholeMessagesOut) {
    FixFramer framer;
    EXPECT_EQ(cut(framer, heartbeat + heartbeat), (std::vector<std::string>{heartbeat, heartbeat}));
}

TEST(FixFramer, PutsAMessageTogetherFromSingleBytes) {
    FixFramer framer;
    std::vector<std::string> found;
    for (char const each : heartbeat + heartbeat)
        for (std::string const& message : cut(framer, std::string(1, each)))
            found.push_back(message);
    EXPECT_EQ(found, (std::vector<std::string>{heartbeat, heartbeat}));
}

TEST(FixFramer, FindsTheSameMessagesHoweverTheBytesComeIn) {
    std::string const bytes = onTheWire("x8=FLY|9=5|35=0|10=227|") + heartbeat;
    std::vector<std::string> found;
    FixFramer framer;
    for (char const each : bytes)
        for (std::string const& piece : cut(framer, std::string(1, each)))
            if (piece[0] != '!')
                found.push_back(piece);
    EXPECT_EQ(found, std::vector<std::string>{heartbeat});
    EXPECT_EQ(cut(framer, bytes).back(), heartbeat);
    EXPECT_EQ(cut(framer, bytes).size(), 2u);
}

struct BadBytes {
    char const* name;
    std::string bytes;
    char const* fault;
};

class FixFramerFaults : public testing::TestWithParam<BadBytes> {};

TEST_P(FixFramerFaults, AreToldAndTheNextMessageIsFound) {
    FixFramer framer;
    std::vector<std::string> const found = cut(framer, onTheWire(GetParam().bytes) + heartbeat);
    ASSERT_GE(found.size(), 2u);
    EXPECT_NE(found.front().find(GetParam().fault), std::string::npos) << found.front();
    EXPECT_EQ(found.back(), heartbeat);
}

INSTANTIATE_TEST_SUITE_P(
    Bytes, FixFramerFaults,
    testing::Values(
        BadBytes{"NoMessage", "GET / HTTP/1.1\r\n\r\n", "no message begins here"},
        BadBytes{"WrongCheckSum", "8=FIX.4.4|9=5|35=0|10=164|", "164 where 163 is right"},
        BadBytes{"LengthTooShort", "8=FIX.4.4|9=4|35=0|10=163|", "no CheckSum (10)"},
        BadBytes{"NoLength", "8=FIX.4.4|35=0|10=163|", "no BodyLength (9)"},
        BadBytes{"LengthIsNoNumber", "8=FIX.4.4|9=x|35=0|10=163|", "no BodyLength (9)"},
        BadBytes{"LengthIsNegative", "8=FIX.4.4|9=-5|35=0|10=163|", "no BodyLength (9)"},
        BadBytes{"LengthIsZero", "8=FIX.4.4|9=0|10=163|", "no BodyLength (9)"},
        BadBytes{"LengthIsHuge", "8=FIX.4.4|9=99999999999999999999|", "no BodyLength (9)"},
        BadBytes{"AnotherProtocol", "8=FLY|9=5|35=0|10=227|", "no message begins here"},
        BadBytes{"VersionDoesNotEnd", "8=FIX" + std::string(100, 'F'), "do not end"}),
    [](auto const& tested) { return tested.param.name; });

TEST(FixFramer, WaitsForABodyOfTheLongestLength) {
    FixFramer framer;
    std::string const head = onTheWire("8=FIX.4.4|9=16777216|35=0|");
    EXPECT_TRUE(cut(framer, head).empty());
}

TEST(FixFramer, IsLinearInBytesThatOnlyBeginMessages) {
    std::string bytes;
    for (int i = 0; i < 300'000; ++i)
        bytes += "8=FIX";
    FixFramer framer;
    framer.append(bytes.data(), bytes.size());
    auto const start = std::chrono::steady_clock::now();
    std::string message;
    std::string fault;
    while (framer.next(message, fault) != FixFramer::Result::incomplete) {
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
}

TEST(FixFramer, ForgetsWhatCameOverAnotherLink) {
    FixFramer framer;
    cut(framer, heartbeat.substr(0, 10));
    framer.clear();
    EXPECT_EQ(cut(framer, heartbeat), std::vector<std::string>{heartbeat});
}

} // namespace
