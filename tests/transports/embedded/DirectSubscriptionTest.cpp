#include "EmbeddedFixture.h"

#include <atomic>

namespace {

using DirectSubscriptionTest = EmbeddedTest;
using Kind = SeenEvent::Kind;

bool isOf(Kind kind, SeenEvent const& event) {
    return event.kind == kind;
}

class DirectKinds : public EmbeddedTest, public testing::WithParamInterface<Kind> {};

TEST_P(DirectKinds, AreDeliveredAsTheFlagsSay) {
    startAcceptor();
    startEngine();
    auto* const recorder = new EventRecorder;
    counted_ptr<IZANEventListener> listener(recorder);
    Kind const kind = GetParam();
    engine().subscribeDirect(me, "C", kind == Kind::Admin, kind == Kind::App, kind == Kind::State,
                             listener);
    EventRecorder& all = record();
    engine().connect(me, "C");
    engine().sendMessage(me, "C", order("k-1"));
    ASSERT_TRUE(all.waitFor(isReport));
    engine().disconnect(me, "C", "");
    auto const isEnd = [](SeenEvent const& e) { return (e.flags & FLAG_DISCONNECTED) != 0; };
    ASSERT_TRUE(all.waitFor(isEnd));
    std::size_t ofKind = 0;
    for (SeenEvent const& event : all.events()) {
        ofKind += isOf(kind, event) ? 1 : 0;
    }
    ASSERT_TRUE(recorder->waitFor([&](SeenEvent const& e) { return isOf(kind, e); }, ofKind));
    EXPECT_GE(ofKind, 2u);
    EXPECT_EQ(recorder->events().size(), ofKind);
    ZANEngineProxy::uninitialize();
}

std::string nameOf(testing::TestParamInfo<Kind> const& tested) {
    constexpr char const* names[] = {"Admin", "App", "State"};
    return names[static_cast<int>(tested.param)];
}

INSTANTIATE_TEST_SUITE_P(All, DirectKinds, testing::Values(Kind::Admin, Kind::App, Kind::State),
                         nameOf);

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

TEST_F(DirectSubscriptionTest, TakesTheFlaggedKindsAway) {
    startAndConnect();
    auto* const recorder = new EventRecorder;
    counted_ptr<IZANEventListener> listener(recorder);
    engine().subscribeDirect(me, "C", true, true, false, listener);
    engine().unsubscribeDirect(me, "C", false, true, true, listener);
    EventRecorder& all = record();
    engine().sendMessage(me, "C", order("u-1"));
    engine().sendAdminMessage(me, "C", "35=1|112=u");
    ASSERT_TRUE(all.waitFor(isReport));
    ASSERT_TRUE(recorder->waitFor([](SeenEvent const& e) { return e.isType("0"); }));
    for (SeenEvent const& event : recorder->events()) {
        EXPECT_EQ(event.kind, Kind::Admin);
    }
    ZANEngineProxy::uninitialize();
}

TEST_F(DirectSubscriptionTest, AddsKindsToThoseAListenerHas) {
    startAndConnect();
    auto* const recorder = new EventRecorder;
    counted_ptr<IZANEventListener> listener(recorder);
    engine().subscribeDirect(me, "C", true, false, false, listener);
    engine().subscribeDirect(me, "C", false, true, false, listener);
    engine().subscribeDirect(me, "C", false, true, false, listener);
    engine().sendMessage(me, "C", order("a-1"));
    engine().sendAdminMessage(me, "C", "35=1|112=a");
    EXPECT_TRUE(recorder->waitFor(isReport));
    EXPECT_TRUE(recorder->waitFor([](SeenEvent const& e) { return e.isType("0"); }));
    ZANEngineProxy::uninitialize();
    int reports = 0;
    for (SeenEvent const& event : recorder->events()) {
        reports += isReport(event) ? 1 : 0;
    }
    EXPECT_EQ(reports, 1);
}

// Its owner lets go of it, so that the engine's reference is the last one.
class LeavesByItself : public EventRecorder {
public:
    explicit LeavesByItself(std::atomic<int>& ended) : ended_(ended) {}
    ~LeavesByItself() override { ++ended_; }

private:
    std::atomic<int>& ended_;
};

TEST_F(DirectSubscriptionTest, MayBeGivenUpInsideTheListenersOwnCallback) {
    startAndConnect();
    std::atomic<int> ended{0};
    std::atomic<int> calls{0};
    auto* const recorder = new LeavesByItself(ended);
    auto own = std::make_shared<counted_ptr<IZANEventListener>>(recorder);
    recorder->onEvent = [&calls, own] {
        ++calls;
        engine().destroyDirectSubscriber(*own);
        own->reset();
    };
    engine().subscribeDirect(me, "C", true, true, true, *own);
    EventRecorder& other = record();
    engine().sendMessage(me, "C", order("g-1"));
    engine().sendMessage(me, "C", order("g-2"));
    EXPECT_TRUE(other.waitFor(isReport, 2));
    EXPECT_TRUE(eventually([&] { return ended == 1; }));
    EXPECT_EQ(calls, 1);
}

TEST_F(DirectSubscriptionTest, OfOneKindMayBeGivenUpInsideACallback) {
    startAndConnect();
    auto* const recorder = new EventRecorder;
    recorders_.push_back(counted_ptr<IZANEventListener>(recorder));
    recorder->onEvent = [this] {
        engine().unsubscribeDirect(me, "C", false, true, false, recorders_.front());
    };
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

TEST_F(DirectSubscriptionTest, IgnoresWhatIsNotSubscribed) {
    startAndConnect();
    counted_ptr<IZANEventListener> nobody;
    counted_ptr<IZANEventListener> stranger(new EventRecorder);
    engine().subscribeDirect(me, "C", true, true, true, nobody);
    engine().unsubscribeDirect(me, "C", true, true, true, stranger);
    engine().destroyDirectSubscriber(stranger);
    engine().destroyDirectSubscriber(nobody);
    EXPECT_TRUE(engine().pingConnection(me, "C", 5000));
}

} // namespace
