#include "EmbeddedFixture.h"

#include <atomic>
#include <chrono>
#include <thread>

namespace {

using DirectSubscriptionTest = EmbeddedTest;
using Kind = SeenEvent::Kind;

TEST_F(DirectSubscriptionTest, TellsTheStatesOfAConnectionInTheirOrder) {
    startAcceptor();
    startEngine();
    EventRecorder& recorder = record();
    engine().connect(me, "C");
    engine().disconnect(me, "C", "");
    auto const isEnd = [](SeenEvent const& e) { return (e.flags & FLAG_DISCONNECTED) != 0; };
    ASSERT_TRUE(recorder.waitFor(isEnd));
    std::vector<long> flags;
    for (SeenEvent const& event : recorder.events()) {
        if (event.kind == Kind::State) {
            EXPECT_EQ(event.connection, "C");
            flags.push_back(event.flags);
        }
    }
    EXPECT_EQ(flags, (std::vector<long>{FLAG_LINK_ACTIVE, FLAG_LINK_ACTIVE | FLAG_SESSION_ACTIVE,
                                        FLAG_LINK_ACTIVE | FLAG_LOGGED_OUT,
                                        FLAG_LOGGED_OUT | FLAG_DISCONNECTED}));
}

TEST_F(DirectSubscriptionTest, OfOneKindMayBeGivenUpInsideACallback) {
    startAndConnect();
    auto* const recorder = new EventRecorder;
    recorders_.push_back(counted_ptr<IZANEventListener>(recorder));
    recorder->onEvent(
        [this] { engine().unsubscribeDirect(me, "C", false, true, false, recorders_.front()); });
    engine().subscribeDirect(me, "C", false, true, false, recorders_.front());
    EventRecorder& other = record();
    engine().sendMessage(me, "C", order("x-1"));
    EXPECT_TRUE(other.waitFor(isReport));
    ZANEngineProxy::uninitialize();
    EXPECT_EQ(recorder->events().size(), 1u);
}

TEST_F(DirectSubscriptionTest, EndsOnEveryConnection) {
    startAcceptor();
    std::string second = sessionText("SessionQualifier=2\n");
    second.replace(second.find("ConnectionName=C"), 16, "ConnectionName=D");
    startEngine(second);
    auto* const recorder = new EventRecorder;
    counted_ptr<IZANEventListener> listener(recorder);
    engine().subscribeDirect(me, "C", true, true, true, listener);
    engine().subscribeDirect(me, "D", true, true, true, listener);
    EXPECT_EQ(listener.use_count(), 3u);
    engine().destroyDirectSubscriber(listener);
    EXPECT_EQ(listener.use_count(), 1u);
    engine().connect(me, "C");
    engine().disconnect(me, "C", "");
    ZANEngineProxy::uninitialize();
    EXPECT_TRUE(recorder->events().empty());
}

TEST_F(DirectSubscriptionTest, EndsAfterACallThatIsUnderWay) {
    struct Slow : IZANEventListener {
        void processEvent(counted_ptr<ZANEvent>) override {
            if (!isCalled.exchange(true)) {
                std::this_thread::sleep_for(std::chrono::milliseconds(100));
                hasReturned = true;
            }
        }
        std::atomic<bool> isCalled{false};
        std::atomic<bool> hasReturned{false};
    };
    startAndConnect();
    auto* const slow = new Slow;
    counted_ptr<IZANEventListener> listener(slow);
    engine().subscribeDirect(me, "C", false, true, false, listener);
    engine().sendMessage(me, "C", order("x-1"));
    ASSERT_TRUE(eventually([&] { return slow->isCalled.load(); }));
    engine().destroyDirectSubscriber(listener);
    EXPECT_TRUE(slow->hasReturned);
    EXPECT_EQ(listener.use_count(), 1u);
}

} // namespace
