#include "EmbeddedFixture.h"

#include "errors/ZANNotConnectedException.h"

namespace {

using CounterpartyLossTest = EmbeddedTest;

bool isLinkLost(SeenEvent const& event) {
    return (event.flags & FLAG_DISCONNECTED) != 0;
}

TEST_F(CounterpartyLossTest, IsToldWithinAMoment) {
    startAndConnect({"--no-reports"});
    EventRecorder& recorder = record();
    engine().sendMessage(me, "C", order("in-flight"));
    ASSERT_FALSE(acceptor_->waitForLine("in-flight").empty());
    auto const before = Clock::now();
    acceptor_->end(SIGKILL);
    ASSERT_TRUE(recorder.waitFor(isLinkLost));
    EXPECT_LT(Clock::now() - before, std::chrono::seconds(2));
    EXPECT_FALSE(isConnected());
    SeenEvent const lost = recorder.first(isLinkLost);
    EXPECT_EQ(lost.flags & (FLAG_LINK_ACTIVE | FLAG_SESSION_ACTIVE | FLAG_LOGGED_OUT), 0);
    EXPECT_NE(lost.lastError, "");
    EXPECT_THROW(engine().sendMessage(me, "C", order("late")), ZANNotConnectedException);
}

TEST_F(CounterpartyLossTest, EndsAPingThatWaits) {
    startAndConnect({"--mute"});
    auto const before = Clock::now();
    std::thread killing([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        acceptor_->end(SIGKILL);
    });
    EXPECT_FALSE(engine().pingConnection(me, "C", 5000));
    EXPECT_LT(Clock::now() - before, std::chrono::seconds(3));
    killing.join();
}

TEST_F(CounterpartyLossTest, DoesNotHoldUpADisconnect) {
    startAndConnect({"--mute"});
    auto const before = Clock::now();
    engine().disconnect(me, "C", "");
    EXPECT_LT(Clock::now() - before, std::chrono::seconds(4));
    EXPECT_FALSE(isConnected());
}

TEST_F(CounterpartyLossTest, EndsWhenTheCounterpartyComesBack) {
    startAndConnect();
    EventRecorder& recorder = record();
    acceptor_->end(SIGKILL);
    ASSERT_TRUE(recorder.waitFor(isLinkLost));
    startAcceptor();
    ASSERT_TRUE(eventually([] { return isConnected(); }));
    engine().sendMessage(me, "C", order("back"));
    EXPECT_TRUE(recorder.waitFor(
        [](SeenEvent const& e) { return e.isType("8") && e.field(11) == "back"; }));
    EXPECT_EQ(engine().getConnectionState(me, "C")->getLastError(), "");
}

TEST_F(CounterpartyLossTest, MayBeAnsweredByAConnectOfTheApplication) {
    startAndConnect();
    acceptor_->end(SIGKILL);
    ASSERT_TRUE(eventually([] { return !isConnected(); }));
    startAcceptor();
    engine().connect(me, "C");
    EXPECT_TRUE(isConnected());
}

TEST_F(CounterpartyLossTest, StaysWhenTheApplicationDisconnects) {
    startAndConnect();
    acceptor_->end(SIGKILL);
    ASSERT_TRUE(eventually([] { return !isConnected(); }));
    engine().disconnect(me, "C", "");
    startAcceptor();
    std::this_thread::sleep_for(std::chrono::milliseconds(1500));
    EXPECT_FALSE(isConnected());
}

TEST_F(CounterpartyLossTest, IsSeenWhenHeartbeatsStop) {
    startAcceptor({"--mute"});
    std::string text = sessionText();
    text.replace(text.find("HeartBtInt=10"), 13, "HeartBtInt=1");
    ZANEngineProxy::initialize(Url("embedded:" + writeSessionFile(text)));
    EventRecorder& recorder = record();
    engine().connect(me, "C");
    EXPECT_TRUE(
        recorder.waitFor([](SeenEvent const& e) { return (e.flags & FLAG_TIMED_OUT) != 0; }));
    EXPECT_TRUE(recorder.waitFor(isLinkLost));
}

TEST_F(CounterpartyLossTest, IsToldAsALogoutWhenTheCounterpartyLogsOut) {
    startAndConnect();
    ASSERT_FALSE(acceptor_->waitForLine("logon").empty());
    EventRecorder& recorder = record();
    acceptor_->sendSignal(SIGTERM);
    ASSERT_TRUE(recorder.waitFor(isLinkLost));
    EXPECT_NE(recorder.first(isLinkLost).flags & FLAG_LOGGED_OUT, 0);
    EXPECT_EQ(recorder.first(isLinkLost).lastError, "logged out by the counterparty");
    EXPECT_FALSE(isConnected());
}

} // namespace
