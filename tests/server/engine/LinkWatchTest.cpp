#include "server/engine/LinkWatch.h"

#include "support/Wire.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace {

using namespace zan::server;
using namespace std::chrono_literals;
using Outcome = LogonResult::Outcome;

class LinkWatchTest : public testing::Test {
protected:
    static LinkWatch::Clock::time_point soon() { return LinkWatch::Clock::now() + 10ms; }
    static LinkWatch::Clock::time_point late() { return LinkWatch::Clock::now() + 10s; }

    void logOn() {
        watch.beginLogon();
        watch.linkUp("127.0.0.1:1", "127.0.0.1:2");
        watch.loggedOn(30);
    }

    long flags() const { return watch.state().flags; }

    std::vector<LinkState> published;
    LinkWatch watch{[this](LinkState const& state) { published.push_back(state); }};
};

TEST_F(LinkWatchTest, HasNoFlagsBeforeAnythingHappened) {
    EXPECT_EQ(flags(), 0);
    EXPECT_FALSE(watch.isLoggedOn());
    EXPECT_TRUE(published.empty());
}

TEST_F(LinkWatchTest, PublishesEveryState) {
    logOn();
    ASSERT_EQ(published.size(), 2u);
    EXPECT_EQ(published[0].flags, FLAG_LINK_ACTIVE);
    EXPECT_EQ(published[0].local, "127.0.0.1:1");
    EXPECT_EQ(published[0].remote, "127.0.0.1:2");
    EXPECT_EQ(published[1].flags, FLAG_LINK_ACTIVE | FLAG_SESSION_ACTIVE);
    EXPECT_EQ(published[1].heartbeatSeconds, 30);
    EXPECT_GT(published[1].changed, 0);
}

TEST_F(LinkWatchTest, TellsALogoutFromALostLink) {
    logOn();
    watch.receivedAdmin(onTheWire("8=FIX.4.4|35=5|58=good night|10=000|"));
    watch.loggedOff();
    watch.linkDown();
    EXPECT_EQ(flags(), FLAG_LOGGED_OUT | FLAG_DISCONNECTED);
    EXPECT_EQ(watch.state().lastError, "good night");
    logOn();
    watch.loggedOff();
    watch.linkDown();
    EXPECT_EQ(flags(), FLAG_DISCONNECTED);
    EXPECT_EQ(watch.state().lastError, "the counterparty closed the link");
}

TEST_F(LinkWatchTest, BlamesNobodyForALogoutOfOurOwn) {
    logOn();
    watch.sentAdmin(onTheWire("8=FIX.4.4|35=5|58=bye|10=000|"));
    watch.receivedAdmin(onTheWire("8=FIX.4.4|35=5|10=000|"));
    watch.loggedOff();
    watch.linkDown();
    EXPECT_EQ(flags(), FLAG_LOGGED_OUT | FLAG_DISCONNECTED);
    EXPECT_EQ(watch.state().lastError, "");
}

TEST_F(LinkWatchTest, ClosesTheLinkOfASessionThatWasStopped) {
    logOn();
    watch.stopped();
    EXPECT_EQ(flags(), FLAG_DISCONNECTED);
    EXPECT_EQ(watch.state().lastError, "");
    watch.stopped();
    EXPECT_EQ(published.size(), 3u);
}

TEST_F(LinkWatchTest, KeepsAFlagForEachKindOfTrouble) {
    struct Case {
        FixTrouble kind;
        long flag;
    };
    for (Case const& each :
         {Case{FixTrouble::unreachable, FLAG_UNREACHABLE},
          Case{FixTrouble::timedOut, FLAG_TIMED_OUT}, Case{FixTrouble::badBytes, FLAG_BROKEN},
          Case{FixTrouble::session, 0}}) {
        logOn();
        watch.trouble(each.kind, "some words");
        EXPECT_EQ(flags(), FLAG_LINK_ACTIVE | FLAG_SESSION_ACTIVE | each.flag);
        EXPECT_EQ(watch.state().lastError, "some words");
    }
    logOn();
    EXPECT_EQ(flags(), FLAG_LINK_ACTIVE | FLAG_SESSION_ACTIVE);
    EXPECT_EQ(watch.state().lastError, "");
}

TEST_F(LinkWatchTest, SaysThatTheStorageFailsUntilItWorksAgain) {
    logOn();
    watch.trouble(FixTrouble::storage, "the disk is full");
    EXPECT_TRUE(watch.state().has(FLAG_DB_ERROR));
    EXPECT_EQ(watch.state().lastError, "the disk is full");
    std::size_t const before = published.size();
    watch.stored();
    EXPECT_FALSE(watch.state().has(FLAG_DB_ERROR));
    EXPECT_EQ(published.size(), before + 1);
    watch.stored();
    EXPECT_EQ(published.size(), before + 1);
}

TEST_F(LinkWatchTest, EndsTheWaitForALogonThatCannotBeStored) {
    watch.beginLogon();
    watch.linkUp("here", "there");
    watch.trouble(FixTrouble::storage, "the disk is full");
    LogonResult const result = watch.waitForLogon(late());
    EXPECT_EQ(result.outcome, Outcome::NotStored);
    EXPECT_EQ(result.reason, "the disk is full");
}

TEST_F(LinkWatchTest, IsUnavailableWhileTheCounterpartyDoesNotRead) {
    logOn();
    watch.setUnavailable(true, "does not read");
    EXPECT_TRUE(watch.state().has(FLAG_UNAVAILABLE));
    EXPECT_EQ(watch.state().lastError, "does not read");
    watch.setUnavailable(false, "");
    EXPECT_FALSE(watch.state().has(FLAG_UNAVAILABLE));
    watch.setUnavailable(true, "does not read");
    watch.linkDown();
    watch.linkUp("here", "there");
    EXPECT_FALSE(watch.state().has(FLAG_UNAVAILABLE));
}

TEST_F(LinkWatchTest, PublishesTroubleThatGoesOnOnce) {
    watch.trouble(FixTrouble::unreachable, "refused");
    watch.trouble(FixTrouble::unreachable, "refused");
    EXPECT_EQ(published.size(), 1u);
    watch.trouble(FixTrouble::unreachable, "no route");
    EXPECT_EQ(published.size(), 2u);
    watch.trouble(FixTrouble::session, "a number is too low");
    watch.trouble(FixTrouble::session, "a number is too low");
    EXPECT_EQ(published.size(), 3u);
}

TEST_F(LinkWatchTest, EndsTheWaitForALogonWithItsResult) {
    logOn();
    EXPECT_EQ(watch.waitForLogon(late()).outcome, Outcome::LoggedOn);

    watch.beginLogon();
    watch.trouble(FixTrouble::unreachable, "refused");
    LogonResult const unreachable = watch.waitForLogon(late());
    EXPECT_EQ(unreachable.outcome, Outcome::Failed);
    EXPECT_EQ(unreachable.reason, "refused");

    watch.stopped();
    watch.beginLogon();
    watch.linkUp("a", "b");
    watch.receivedAdmin(onTheWire("8=FIX.4.4|35=5|58=who are you|10=000|"));
    LogonResult const refused = watch.waitForLogon(late());
    EXPECT_EQ(refused.outcome, Outcome::Refused);
    EXPECT_EQ(refused.reason, "who are you");

    watch.stopped();
    watch.beginLogon();
    watch.linkUp("a", "b");
    watch.linkDown();
    EXPECT_EQ(watch.waitForLogon(late()).reason, "the counterparty closed the link");

    watch.beginLogon();
    watch.cancelLogon("not now");
    EXPECT_EQ(watch.waitForLogon(late()).reason, "not now");
}

TEST_F(LinkWatchTest, TellsARefusalWithoutWords) {
    watch.beginLogon();
    watch.linkUp("a", "b");
    watch.receivedAdmin(onTheWire("8=FIX.4.4|35=5|10=000|"));
    EXPECT_EQ(watch.waitForLogon(late()).reason, "refused without a reason");
}

TEST_F(LinkWatchTest, EndsTheWaitForALogonInTime) {
    watch.beginLogon();
    EXPECT_EQ(watch.waitForLogon(soon()).reason, "no link in time");
    EXPECT_EQ(flags(), FLAG_TIMED_OUT);
    watch.beginLogon();
    watch.linkUp("a", "b");
    EXPECT_EQ(watch.waitForLogon(soon()).reason, "no answer to the Logon in time");
}

TEST_F(LinkWatchTest, WaitsForTheLinkToClose) {
    logOn();
    EXPECT_FALSE(watch.waitForLinkDown(soon()));
    std::thread closing([this] { watch.linkDown(); });
    EXPECT_TRUE(watch.waitForLinkDown(late()));
    closing.join();
}

TEST_F(LinkWatchTest, KnowsTheHeartbeatThatAnswersATestRequest) {
    logOn();
    watch.expectAnswer("ours");
    watch.receivedAdmin(onTheWire("8=FIX.4.4|35=0|10=000|"));
    watch.receivedAdmin(onTheWire("8=FIX.4.4|35=0|112=another|10=000|"));
    EXPECT_FALSE(watch.waitForAnswer("ours", soon()));
    watch.expectAnswer("second");
    watch.receivedAdmin(onTheWire("8=FIX.4.4|35=0|112=second|10=000|"));
    EXPECT_TRUE(watch.waitForAnswer("second", late()));
}

TEST_F(LinkWatchTest, WaitsForNoAnswerWhenTheSessionIsLost) {
    logOn();
    watch.expectAnswer("lost");
    watch.loggedOff();
    EXPECT_FALSE(watch.waitForAnswer("lost", late()));
}

TEST_F(LinkWatchTest, MakesARecordForApplications) {
    logOn();
    watch.trouble(FixTrouble::session, "some words");
    auto const record = watch.state().record();
    EXPECT_EQ(record->getState(), FLAG_LINK_ACTIVE | FLAG_SESSION_ACTIVE);
    EXPECT_EQ(record->getHeartbeats(), 30);
    EXPECT_EQ(record->getLocalAddress(), "127.0.0.1:1");
    EXPECT_EQ(record->getRemoteAddress(), "127.0.0.1:2");
    EXPECT_EQ(record->getLastError(), "some words");
    EXPECT_EQ(record->getTimeLastStateChange(), published.back().changed);
}

} // namespace
