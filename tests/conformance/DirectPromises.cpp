// Listeners that are attached straight to the adapter.
#include "conformance/Trial.h"

#include <algorithm>
#include <atomic>
#include <utility>

namespace zan::conformance {

namespace {

using Kind = SeenEvent::Kind;

bool isEnd(SeenEvent const& event) {
    return (event.flags & FLAG_DISCONNECTED) != 0;
}

std::size_t countOf(EventRecorder& recorder, Kind kind) {
    auto const events = recorder.events();
    return static_cast<std::size_t>(std::ranges::count(events, kind, &SeenEvent::kind));
}

void expectOnly(Trial& trial, Kind kind) {
    auto* const recorder = new EventRecorder;
    counted_ptr<IZANEventListener> listener(recorder);
    Trial::engine().subscribeDirect(Trial::me, trial.name(), kind == Kind::Admin, kind == Kind::App,
                                    kind == Kind::State, listener);
    EventRecorder& all = trial.record();
    trial.connect();
    std::string const id = trial.newId();
    ASSERT_TRUE(trial.waitForOrder(all, id, trial.send(id)));
    trial.disconnect();
    if (trial.has(Ability::States)) {
        ASSERT_TRUE(all.waitFor(isEnd));
    }
    ZANEngineProxy::uninitialize();
    EXPECT_EQ(recorder->events().size(), countOf(all, kind));
    EXPECT_EQ(countOf(*recorder, kind), countOf(all, kind));
    EXPECT_GE(countOf(all, kind), 1u);
}

void giveAdminMessagesAlone(Trial& trial) {
    expectOnly(trial, Kind::Admin);
}

void giveApplicationMessagesAlone(Trial& trial) {
    expectOnly(trial, Kind::App);
}

void giveStatesAlone(Trial& trial) {
    expectOnly(trial, Kind::State);
}

void takeKindsAway(Trial& trial) {
    trial.connect();
    auto* const recorder = new EventRecorder;
    counted_ptr<IZANEventListener> listener(recorder);
    Trial::engine().subscribeDirect(Trial::me, trial.name(), true, true, true, listener);
    Trial::engine().unsubscribeDirect(Trial::me, trial.name(), false, true, false, listener);
    EventRecorder& all = trial.record();
    std::string const id = trial.newId();
    ASSERT_TRUE(trial.waitForOrder(all, id, trial.send(id)));
    ZANEngineProxy::uninitialize();
    EXPECT_EQ(countOf(*recorder, Kind::App), 0u);
}

void addKindsWithoutDoubling(Trial& trial) {
    auto* const recorder = new EventRecorder;
    counted_ptr<IZANEventListener> listener(recorder);
    Trial::engine().subscribeDirect(Trial::me, trial.name(), true, false, false, listener);
    Trial::engine().subscribeDirect(Trial::me, trial.name(), false, true, false, listener);
    Trial::engine().subscribeDirect(Trial::me, trial.name(), false, true, false, listener);
    trial.connect();
    std::string const id = trial.newId();
    long const number = trial.send(id);
    EXPECT_TRUE(trial.waitForOrder(*recorder, id, number));
    ZANEngineProxy::uninitialize();
    auto const events = recorder->events();
    EXPECT_EQ(std::ranges::count(events, static_cast<int>(number), &SeenEvent::id), 1);
}

void endWithTheirListener(Trial& trial) {
    auto* const recorder = new EventRecorder;
    counted_ptr<IZANEventListener> listener(recorder);
    std::vector<std::string> names;
    Trial::engine().getConnectionNameList(Trial::me, names);
    for (std::string const& each : names) {
        Trial::engine().subscribeDirect(Trial::me, each, true, true, true, listener);
    }
    Trial::engine().destroyDirectSubscriber(listener);
    EXPECT_EQ(listener.use_count(), 1u) << "the adapter keeps no reference";
    EventRecorder& other = trial.record();
    trial.connect();
    std::string const id = trial.newId();
    ASSERT_TRUE(trial.waitForOrder(other, id, trial.send(id)));
    ZANEngineProxy::uninitialize();
    EXPECT_TRUE(recorder->events().empty());
}

// Its owner lets go of it, so that the adapter's reference is the last one.
class LeavesByItself : public EventRecorder {
public:
    explicit LeavesByItself(std::atomic<int>& ended) : ended_(ended) {}
    ~LeavesByItself() override { ++ended_; }

private:
    std::atomic<int>& ended_;
};

void mayBeGivenUpInsideACallback(Trial& trial) {
    trial.connect();
    std::atomic<int> ended{0};
    std::atomic<int> calls{0};
    auto* const recorder = new LeavesByItself(ended);
    auto own = std::make_shared<counted_ptr<IZANEventListener>>(recorder);
    recorder->onEvent([&calls, own] {
        ++calls;
        Trial::engine().destroyDirectSubscriber(*own);
        own->reset();
    });
    Trial::engine().subscribeDirect(Trial::me, trial.name(), true, true, true, *own);
    EventRecorder& other = trial.record();
    trial.send(trial.newId());
    std::string const id = trial.newId();
    ASSERT_TRUE(trial.waitForOrder(other, id, trial.send(id)));
    EXPECT_TRUE(trial.eventually([&] { return ended == 1; }));
    ZANEngineProxy::uninitialize();
    EXPECT_EQ(calls, 1);
}

void ignoreWhatIsNotSubscribed(Trial& trial) {
    counted_ptr<IZANEventListener> nobody;
    counted_ptr<IZANEventListener> stranger(new EventRecorder);
    auto const& name = trial.name();
    EXPECT_NO_THROW(Trial::engine().subscribeDirect(Trial::me, name, true, true, true, nobody));
    EXPECT_NO_THROW(Trial::engine().unsubscribeDirect(Trial::me, name, true, true, true, stranger));
    EXPECT_NO_THROW(Trial::engine().destroyDirectSubscriber(stranger));
    EXPECT_NO_THROW(Trial::engine().destroyDirectSubscriber(nobody));
    EXPECT_EQ(stranger.use_count(), 1u);
    trial.connect();
    EXPECT_GT(trial.send(trial.newId()), 0) << "nobody's events harm nobody";
}

void goOnAfterAListenerThatThrows(Trial& trial) {
    std::atomic<int> calls{0};
    trial.record([&calls] {
        ++calls;
        throw 42;
    });
    EventRecorder& next = trial.record();
    trial.connect();
    std::string const id = trial.newId();
    EXPECT_TRUE(trial.waitForOrder(next, id, trial.send(id)));
    ZANEngineProxy::uninitialize();
    EXPECT_GT(calls, 0);
}

void tellTheWayOfAConnection(Trial& trial) {
    EventRecorder& recorder = trial.record();
    trial.connect();
    trial.disconnect();
    ASSERT_TRUE(recorder.waitFor(isEnd));
    std::vector<int> session;
    for (SeenEvent const& each : recorder.events()) {
        if (each.kind == Kind::State) {
            EXPECT_EQ(each.connection, trial.name());
            session.push_back((each.flags & FLAG_SESSION_ACTIVE) != 0 ? 1 : 0);
        }
    }
    // However many steps there are, the session comes once and goes once.
    session.insert(session.begin(), 0);
    session.erase(std::unique(session.begin(), session.end()), session.end());
    EXPECT_EQ(session, (std::vector<int>{0, 1, 0}));
}

} // namespace

Promises directPromises() {
    using A = Ability;
    std::vector<A> const direct = {A::Connections, A::Sending, A::Events, A::Direct};
    std::vector<A> const admin = {A::Connections, A::Sending, A::Events, A::Direct, A::Sessions};
    std::vector<A> const states = {A::Connections, A::Sending, A::Events, A::Direct, A::States};
    std::vector<A> const ways = {A::Connections, A::Direct, A::States};
    return {
        {"Direct", "GivesAdminMessagesAlone", admin, giveAdminMessagesAlone},
        {"Direct", "GivesApplicationMessagesAlone", direct, giveApplicationMessagesAlone},
        {"Direct", "GivesStatesAlone", states, giveStatesAlone},
        {"Direct", "TakesKindsAway", direct, takeKindsAway},
        {"Direct", "AddsKindsWithoutDoubling", direct, addKindsWithoutDoubling},
        {"Direct", "EndsWithItsListener", direct, endWithTheirListener},
        {"Direct", "MayBeGivenUpInsideACallback", direct, mayBeGivenUpInsideACallback},
        {"Direct", "IgnoresWhatIsNotSubscribed", direct, ignoreWhatIsNotSubscribed},
        {"Direct", "GoesOnAfterAListenerThatThrows", direct, goOnAfterAListenerThatThrows},
        {"States", "TellTheWayOfAConnection", ways, tellTheWayOfAConnection},
    };
}

} // namespace zan::conformance
