#include "EmbeddedFixture.h"

#include "infra/WrongConfigurationException.h"

#include <atomic>
#include <cstdlib>

namespace {

using LifeCycleTest = EmbeddedTest;

TEST_F(LifeCycleTest, LogsOutWhenTheEngineStops) {
    startAndConnect();
    ZANEngineProxy::uninitialize();
    std::string const logout = acceptor_->waitForLine("|35=5|");
    EXPECT_NE(logout.find("|58=the engine stops|"), std::string::npos) << logout;
}

TEST_F(LifeCycleTest, DeliversTheLastEventsBeforeTheEngineIsGone) {
    startAndConnect();
    EventRecorder& recorder = record();
    ZANEngineProxy::uninitialize();
    std::vector<SeenEvent> const events = recorder.events();
    ASSERT_FALSE(events.empty());
    EXPECT_EQ(events.back().flags, FLAG_LOGGED_OUT | FLAG_DISCONNECTED);
}

TEST_F(LifeCycleTest, GoesOnWithItsNumbersAfterARestart) {
    startAndConnect();
    EventRecorder& recorder = record();
    engine().sendMessage(me, "C", order("one"));
    ASSERT_TRUE(recorder.waitFor(isReport));
    ZANEngineProxy::uninitialize();
    startEngine();
    engine().connect(me, "C");
    engine().sendMessage(me, "C", order("two"));
    std::string const second = acceptor_->waitForLine("|11=two|");
    // Logon, order, Logout, Logon, order
    EXPECT_NE(second.find("|34=5|"), std::string::npos) << second;
}

TEST_F(LifeCycleTest, MayBeEndedByADirectListener) {
    startAndConnect();
    std::atomic<bool> isEnded{false};
    EventRecorder& recorder = record([&] {
        if (!isEnded) {
            ZANEngineProxy::uninitialize();
            ZANEngineProxy::uninitialize();
            isEnded = true;
        }
    });
    engine().sendMessage(me, "C", order("x"));
    ASSERT_TRUE(eventually([&] { return isEnded.load(); }));
    EXPECT_FALSE(ZANEngineProxy::isInitialized());
    EXPECT_FALSE(acceptor_->waitForLine("|35=5|").empty());
    EXPECT_TRUE(eventually([&] { return !recorder.events().empty(); }));
    // The listener's connection keeps the folder until the listener has returned.
    EXPECT_TRUE(eventually([&] {
        try {
            startEngine();
            return true;
        } catch (WrongConfigurationException const&) {
            return false;
        }
    }));
    engine().connect(me, "C");
}

TEST_F(LifeCycleTest, StopsInTimeWhenTheCounterpartyIsMute) {
    startAndConnect({"--mute"});
    auto const before = Clock::now();
    ZANEngineProxy::uninitialize();
    EXPECT_LT(Clock::now() - before, std::chrono::seconds(4));
}

TEST_F(LifeCycleTest, OfTheDemoNeedsNoSetUp) {
    // Other tests use the system's folder at the same time.
    setenv("TMPDIR", folder_.c_str(), 1);
    ZANEngineProxy::initialize(Url("embedded:demo"));
    EXPECT_FALSE(std::filesystem::is_empty(folder_));
    std::vector<std::string> names;
    engine().getConnectionNameList(me, names);
    ASSERT_EQ(names, std::vector<std::string>{"DEMO"});
    auto* const recorder = new EventRecorder;
    counted_ptr<IZANEventListener> listener(recorder);
    engine().subscribeDirect(me, "DEMO", true, true, true, listener);
    engine().connect(me, "DEMO");
    engine().sendMessage(me, "DEMO", order("demo-1"));
    EXPECT_TRUE(recorder->waitFor([](SeenEvent const& e) { return e.field(39) == "2"; }));
    EXPECT_EQ(recorder->first([](SeenEvent const& e) { return e.field(39) == "2"; }).field(14),
              "100");
    ZANEngineProxy::uninitialize();
    EXPECT_TRUE(std::filesystem::is_empty(folder_));
    unsetenv("TMPDIR");
}

// What a program does that ends without a word to the engine.
TEST_F(LifeCycleTest, MayEndWithTheProgram) {
    EXPECT_EXIT(
        {
            ZANEngineProxy::initialize(Url("embedded:demo"));
            engine().connect(me, "DEMO");
            std::exit(7);
        },
        testing::ExitedWithCode(7), "");
}

} // namespace
