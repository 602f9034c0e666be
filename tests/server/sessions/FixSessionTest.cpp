#include "server/sessions/RawPeer.h"
#include "server/sessions/SessionPair.h"

#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <thread>

namespace {

using namespace zan::server;
using namespace std::chrono_literals;

// Tests that watch messages go out leave the order of both sides' reports open.
std::vector<std::string> kindsOf(SessionRecorder const& recorder) {
    std::vector<std::string> kinds;
    for (std::string const& line : recorder.lines())
        kinds.push_back(line.substr(0, line.find(' ')));
    return kinds;
}

TEST(FixSession, ReportsItsLifeInOrder) {
    SessionPair pair;
    ASSERT_TRUE(pair.logOn());
    EXPECT_TRUE(pair.us->isLoggedOn());
    pair.us->requestLogout("bye");
    ASSERT_TRUE(pair.ours.waitFor("down"));
    EXPECT_EQ(kindsOf(pair.ours),
              (std::vector<std::string>{"up", ">", "<", "on", ">", "<", "off", "down"}));
    EXPECT_FALSE(pair.us->isLoggedOn());
}

TEST(FixSession, SaysWhyItLogsOut) {
    SessionPair pair;
    ASSERT_TRUE(pair.logOn());
    pair.us->requestLogout("the day is over");
    ASSERT_TRUE(pair.theirs.waitFor("|35=5|"));
    EXPECT_NE(pair.theirs.linesWith("|35=5|").front().find("|58=the day is over|"),
              std::string::npos);
}

TEST(FixSession, AddsFieldsToItsLogon) {
    SessionPair pair;
    ASSERT_TRUE(pair.logOn({{553, "joe"}, {554, "secret"}, {57, "DESK"}, {108, "7"}}));
    std::string const logon = pair.theirs.linesWith("|35=A|").front();
    for (char const* field : {"|553=joe|", "|554=secret|", "|57=DESK|", "|108=7|"})
        EXPECT_NE(logon.find(field), std::string::npos) << logon;
    EXPECT_EQ(logon.find("|108=5|"), std::string::npos) << logon;
}

TEST(FixSession, ResetsTheNumbersWhenItsLogonSaysSo) {
    SessionPair pair;
    ASSERT_TRUE(pair.logOn());
    pair.us->requestLogout("");
    ASSERT_TRUE(pair.ours.waitFor("down"));
    EXPECT_EQ(pair.us->nextSenderNumber(), 3);
    pair.us->start({{141, "Y"}});
    ASSERT_TRUE(pair.ours.waitFor("on", 2));
    EXPECT_EQ(pair.us->nextSenderNumber(), 2);
}

TEST(FixSession, SendsTheBodyExactlyInTheOrderGiven) {
    SessionPair pair;
    ASSERT_TRUE(pair.logOn());
    ASSERT_EQ(pair.send("D", {{55, "IBM"},
                              {453, "2"},
                              {448, "A"},
                              {447, "D"},
                              {448, "B"},
                              {447, "D"},
                              {11, "1"},
                              {5001, "x"},
                              {5001, "y"}}),
              FixSendResult::sent);
    ASSERT_TRUE(pair.theirs.waitFor("|35=D|"));
    std::string const order = pair.theirs.linesWith("|35=D|").front();
    EXPECT_NE(order.find("|56=THEM|55=IBM|453=2|448=A|447=D|448=B|447=D|11=1|5001=x|5001=y|10="),
              std::string::npos)
        << order;
}

TEST(FixSession, PutsHeaderFieldsIntoTheHeaderAndKeepsItsOwn) {
    SessionPair pair;
    ASSERT_TRUE(pair.logOn());
    pair.send("D", {{11, "1"}, {34, "99"}, {49, "EVIL"}, {97, "Y"}, {10, "000"}, {55, "IBM"}});
    ASSERT_TRUE(pair.theirs.waitFor("|35=D|"));
    std::string const order = pair.theirs.linesWith("|35=D|").front();
    EXPECT_NE(order.find("|34=2|49=US|"), std::string::npos) << order;
    EXPECT_NE(order.find("|97=Y|11=1|55=IBM|10="), std::string::npos) << order;
    EXPECT_EQ(order.find("EVIL"), std::string::npos) << order;
}

TEST(FixSession, CarriesDataThatContainsSoh) {
    SessionPair pair;
    ASSERT_TRUE(pair.logOn());
    pair.send("B", {{148, "News"}, {95, "3"}, {96, "a\x01z"}, {58, "x"}});
    ASSERT_TRUE(pair.theirs.waitFor("|95=3|96=a|z|58=x|10="));
}

TEST(FixSession, ReportsWhatItSendsAsAdministrativeOrNot) {
    SessionPair pair;
    ASSERT_TRUE(pair.logOn());
    EXPECT_EQ(pair.send("1", {{112, "are you there"}}), FixSendResult::sent);
    EXPECT_TRUE(pair.ours.waitFor("|35=0|"));
    EXPECT_NE(pair.ours.linesWith("|35=0|").front().find("|112=are you there|"), std::string::npos);
}

TEST(FixSession, NeitherStoresNorNumbersWhatIsSentWhileLoggedOff) {
    SessionPair pair;
    EXPECT_EQ(pair.send("D", {{11, "1"}}), FixSendResult::notLoggedOn);
    EXPECT_EQ(pair.us->nextSenderNumber(), 1);
    ASSERT_TRUE(pair.logOn());
    EXPECT_TRUE(pair.theirs.linesWith("|35=D|").empty());
    pair.us->requestLogout("");
    ASSERT_TRUE(pair.ours.waitFor("down"));
    int const number = pair.us->nextSenderNumber();
    EXPECT_EQ(pair.send("D", {{11, "1"}}), FixSendResult::notLoggedOn);
    EXPECT_EQ(pair.us->nextSenderNumber(), number);
}

TEST(FixSession, DoesNotComeBackByItselfAfterALogoutOfItsOwn) {
    SessionPair pair;
    ASSERT_TRUE(pair.logOn());
    pair.us->requestLogout("");
    ASSERT_TRUE(pair.ours.waitFor("down"));
    EXPECT_FALSE(pair.ours.waitFor("up", 2, 1500ms));
}

TEST(FixSession, CanBeStartedAgainAtOnceAfterALogout) {
    SessionPair pair;
    ASSERT_TRUE(pair.logOn());
    for (std::size_t round = 2; round < 6; ++round) {
        pair.us->requestLogout("");
        pair.us->start({});
        ASSERT_TRUE(pair.ours.waitFor("on", round)) << pair.ours.all();
    }
}

TEST(FixSession, ComesBackByItselfWhenTheCounterpartyLogsItOut) {
    SessionPair pair;
    ASSERT_TRUE(pair.logOn());
    pair.them->requestLogout("a break");
    ASSERT_TRUE(pair.ours.waitFor("|58=a break|"));
    EXPECT_TRUE(pair.ours.waitFor("on", 2)) << pair.ours.all();
}

TEST(FixSession, ReportsNothingAfterStop) {
    SessionPair pair;
    ASSERT_TRUE(pair.logOn());
    pair.us->stop();
    std::vector<std::string> const atStop = pair.ours.lines();
    EXPECT_EQ(atStop.back(), "down");
    std::this_thread::sleep_for(50ms);
    EXPECT_EQ(pair.ours.lines(), atStop);
}

TEST(FixSession, KeepsTheOrderOfManyMessages) {
    SessionPair pair;
    ASSERT_TRUE(pair.logOn());
    std::atomic<int> next{0};
    std::atomic<int> misplaced{0};
    pair.theirs.onReceived([&](std::string const& message) {
        if (fixValue(message, 35) == "D" && fixValue(message, 11) != std::to_string(next++))
            ++misplaced;
    });
    int const count = 5000;
    for (int i = 0; i < count; ++i)
        ASSERT_EQ(pair.send("D", {{11, std::to_string(i)}, {55, "IBM"}}), FixSendResult::sent);
    pair.send("B", {{148, "the end"}});
    ASSERT_TRUE(pair.theirs.waitFor("|148=the end|", 1, 20s));
    EXPECT_EQ(next, count);
    EXPECT_EQ(misplaced, 0);
}

TEST(FixSession, SendsFromSeveralThreadsAtOnce) {
    SessionPair pair;
    ASSERT_TRUE(pair.logOn());
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread)
        threads.emplace_back([&pair, thread] {
            for (int i = 0; i < 250; ++i)
                pair.send("D", {{11, std::to_string(thread * 1000 + i)}});
        });
    for (std::thread& thread : threads)
        thread.join();
    ASSERT_TRUE(pair.theirs.waitFor("|35=D|", 1000, 20s));
    std::set<std::string> ids;
    for (std::string const& line : pair.theirs.linesWith("|35=D|"))
        ids.insert(line.substr(line.find("|11=")));
    EXPECT_EQ(pair.theirs.linesWith("|35=D|").size(), 1000u);
    EXPECT_EQ(ids.size(), 1000u);
}

TEST(FixSession, MayBeUsedByAReport) {
    SessionPair pair;
    pair.theirs.onReceived([&pair](std::string const& message) {
        if (fixValue(message, 35) == "D")
            sendOne(*pair.them, "8", {{11, fixValue(message, 11)}}, 0ms);
    });
    ASSERT_TRUE(pair.logOn());
    pair.send("D", {{11, "echo"}});
    EXPECT_TRUE(pair.ours.waitFor("|35=8|"));
}

TEST(FixSession, HoldsTheCounterpartyBackWhileItDoesNotRead) {
    SessionPair pair;
    ASSERT_TRUE(pair.logOn());
    pair.us->setReading(false);
    std::this_thread::sleep_for(20ms);
    for (int i = 0; i < 10; ++i)
        sendOne(*pair.them, "8", {{11, std::to_string(i)}}, 1000ms);
    EXPECT_FALSE(pair.ours.waitFor("|35=8|", 1, 300ms));
    pair.us->setReading(true);
    EXPECT_TRUE(pair.ours.waitFor("|35=8|", 10));
}

TEST(FixSession, StopsReadingBeforeItTakesMoreWhenAReportSaysSo) {
    SessionPair pair;
    ASSERT_TRUE(pair.logOn());
    pair.theirs.onReceived([&pair](std::string const&) { pair.them->setReading(false); });
    pair.send("D", {{11, "first"}});
    ASSERT_TRUE(pair.theirs.waitFor("|11=first|"));
    pair.send("D", {{11, "second"}});
    EXPECT_FALSE(pair.theirs.waitFor("|11=second|", 1, 100ms));
    pair.them->setReading(true);
    EXPECT_TRUE(pair.theirs.waitFor("|11=second|"));
}

TEST(FixSession, SendsHeartbeatsAlsoWhileItDoesNotRead) {
    SessionPair pair(Keys{{"HeartBtInt", "1"}});
    ASSERT_TRUE(pair.logOn());
    pair.us->setReading(false);
    EXPECT_TRUE(pair.theirs.waitFor("|35=0|", 2, 5s));
    EXPECT_TRUE(pair.us->isLoggedOn());
}

} // namespace
