#include "server/sessions/RawPeer.h"
#include "server/sessions/SessionPair.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

using namespace zan::server;
using namespace std::chrono_literals;

/// Takes its time over the end of a link.
class SlowGoodbye : public SessionRecorder {
public:
    void linkDown() override {
        std::this_thread::sleep_for(100ms);
        SessionRecorder::linkDown();
    }
};

TEST(FixAcceptor, PicksAFreePort) {
    auto const first = FixAcceptor::listen("127.0.0.1", 0);
    auto const second = FixAcceptor::listen("127.0.0.1", 0);
    EXPECT_GT(first->port(), 0);
    EXPECT_NE(first->port(), second->port());
}

TEST(FixAcceptor, NamesAddressAndReasonWhenThePortIsTaken) {
    auto const first = FixAcceptor::listen("127.0.0.1", 0);
    std::string const where = "127.0.0.1:" + std::to_string(first->port());
    try {
        FixAcceptor::listen("127.0.0.1", first->port());
        FAIL() << "bound twice";
    } catch (std::runtime_error const& error) {
        EXPECT_EQ(error.what(), "cannot listen on " + where + ": Address already in use");
    }
}

TEST(FixAcceptor, ServesSeveralSessions) {
    SessionRecorder theirs[2];
    SessionRecorder ours[2];
    auto const acceptor = FixAcceptor::listen("127.0.0.1", 0);
    acceptor->add(settingsFor("THEM", "ONE", 0), theirs[0]);
    acceptor->add(settingsFor("THEM", "TWO", 0), theirs[1]);
    acceptor->start();
    auto const one = FixSession::initiator(settingsFor("ONE", "THEM", acceptor->port()), ours[0]);
    auto const two = FixSession::initiator(settingsFor("TWO", "THEM", acceptor->port()), ours[1]);
    one->start({});
    two->start({});
    for (SessionRecorder const& each : ours)
        EXPECT_TRUE(each.waitFor("on"));
    for (SessionRecorder const& each : theirs)
        EXPECT_TRUE(each.waitFor("on"));
}

TEST(FixAcceptor, AddsFieldsToTheLogonThatAnswers) {
    SessionPair pair;
    pair.them->start({{58, "welcome"}});
    ASSERT_TRUE(pair.logOn());
    EXPECT_NE(pair.ours.linesWith("|35=A|").back().find("|58=welcome|"), std::string::npos);
}

TEST(FixAcceptor, TakesOverTheHeartbeatIntervalOfTheLogon) {
    SessionPair pair(Keys{{"HeartBtInt", "1"}});
    ASSERT_TRUE(pair.logOn());
    EXPECT_TRUE(pair.ours.waitFor("|35=0|", 1, 4s));
}

TEST(FixAcceptor, ClosesALinkWhoseLogonIsForNobodyHere) {
    SessionPair pair;
    pair.acceptor->start();
    RawPeer stranger("STRANGER", "THEM");
    ASSERT_TRUE(stranger.connect(pair.acceptor->port()));
    stranger.send("A", "98=0|108=5|");
    EXPECT_TRUE(stranger.waitForEnd());
    EXPECT_TRUE(pair.theirs.lines().empty());
}

TEST(FixAcceptor, ClosesALinkThatDoesNotBeginWithALogon) {
    SessionPair pair;
    pair.acceptor->start();
    for (std::string const first : {"order", "GET / HTTP/1.1\r\n\r\n"}) {
        RawPeer stranger("US", "THEM");
        ASSERT_TRUE(stranger.connect(pair.acceptor->port()));
        stranger.sendBytes(first == "order" ? stranger.framed("D", "11=1|") : first);
        EXPECT_TRUE(stranger.waitForEnd());
    }
    EXPECT_TRUE(pair.theirs.lines().empty());
}

TEST(FixAcceptor, ClosesASecondLinkAndKeepsTheFirst) {
    SessionPair pair;
    ASSERT_TRUE(pair.logOn());
    RawPeer second("US", "THEM");
    ASSERT_TRUE(second.connect(pair.acceptor->port()));
    second.send("A", "98=0|108=5|");
    EXPECT_TRUE(second.waitForEnd());
    EXPECT_EQ(pair.send("D", {{11, "1"}}), FixSendResult::sent);
    EXPECT_TRUE(pair.theirs.waitFor("|35=D|"));
}

TEST(FixAcceptor, TakesAClientThatComesBackAtOnce) {
    SlowGoodbye theirs;
    SessionRecorder ours;
    auto const acceptor = FixAcceptor::listen("127.0.0.1", 0);
    acceptor->add(settingsFor("THEM", "US", 0), theirs);
    acceptor->start();
    auto const us = FixSession::initiator(settingsFor("US", "THEM", acceptor->port()), ours);
    us->start({});
    ASSERT_TRUE(ours.waitFor("on"));
    us->requestLogout("");
    ASSERT_TRUE(ours.waitFor("down"));
    us->start({});
    EXPECT_TRUE(ours.waitFor("on", 2)) << ours.all();
    EXPECT_TRUE(ours.linesWith("!").empty()) << ours.all();
}

TEST(FixAcceptor, RefusesConnectionsAndReportsNothingAfterStop) {
    SessionPair pair;
    ASSERT_TRUE(pair.logOn());
    int const port = pair.acceptor->port();
    pair.acceptor->stop();
    EXPECT_EQ(pair.theirs.lines().back(), "down");
    EXPECT_TRUE(pair.ours.waitFor("! unreachable"));
    RawPeer late;
    EXPECT_FALSE(late.connect(port));
}

TEST(FixAcceptor, StopsAlsoWhileALinkHasSaidNothingYet) {
    SessionPair pair;
    pair.acceptor->start();
    RawPeer silent;
    ASSERT_TRUE(silent.connect(pair.acceptor->port()));
    auto const start = std::chrono::steady_clock::now();
    pair.acceptor->stop();
    EXPECT_LT(std::chrono::steady_clock::now() - start, 2s);
}

} // namespace
