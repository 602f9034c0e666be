#include "engine/ZANEngineProxy.h"

#include "errors/ZANEngineException.h"
#include "errors/ZANInvalidConfigPropertiesException.h"
#include "events/ZANAdminMessageEvent.h"
#include "events/ZANAppMessageEvent.h"
#include "events/ZANConnectionStateEvent.h"
#include "infra/ValuePresentation.h"
#include "support/RecordingListener.h"
#include "support/RunningEngine.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

using Listener = counted_ptr<IZANEventListener>;

RecordingListener& recorded(Listener const& listener) {
    return static_cast<RecordingListener&>(*listener);
}

counted_ptr<ZANEvent> appEvent(std::string const& name) {
    return counted_ptr<ZANEvent>(new ZANAppMessageEvent(name, nullptr));
}

counted_ptr<ZANEvent> adminEvent(std::string const& name) {
    return counted_ptr<ZANEvent>(new ZANAdminMessageEvent(name, nullptr));
}

counted_ptr<ZANEvent> stateEvent(std::string const& name) {
    return counted_ptr<ZANEvent>(new ZANConnectionStateEvent(name, nullptr));
}

class EventDispatch : public testing::Test {
protected:
    void subscribe(Listener& listener, std::string const& name, std::string const& type) {
        engine.proxy().subscribe(ticket, listener, name, type);
    }
    void unsubscribe(Listener& listener, std::string const& name, std::string const& type) {
        engine.proxy().unsubscribe(ticket, listener, name, type);
    }
    void report(counted_ptr<ZANEvent> const& event) { engine.adapter().report(event); }

    RunningEngine engine;
    UserTicket ticket;
};

TEST_F(EventDispatch, BringsEachKindOfMessageToItsListeners) {
    Listener app = recordingListener();
    Listener admin = recordingListener();
    subscribe(app, "A", "APP");
    subscribe(admin, "A", "ADMIN");
    auto const order = appEvent("A");
    auto const heartbeat = adminEvent("A");
    report(order);
    report(heartbeat);
    EXPECT_EQ(std::vector({order}), recorded(app).events);
    EXPECT_EQ(std::vector({heartbeat}), recorded(admin).events);
}

TEST_F(EventDispatch, GoesByTheClassOfTheEventAndNotByItsAdminFlag) {
    struct FlaggedEvent : ZANAppMessageEvent {
        using ZANAppMessageEvent::ZANAppMessageEvent;
        bool isAdmin() const override { return true; }
    };
    Listener app = recordingListener();
    Listener admin = recordingListener();
    subscribe(app, "A", "APP");
    subscribe(admin, "A", "ADMIN");
    report(counted_ptr<ZANEvent>(new FlaggedEvent("A", nullptr)));
    EXPECT_EQ(1u, recorded(app).events.size());
    EXPECT_TRUE(recorded(admin).events.empty());
}

TEST_F(EventDispatch, DropsStateEventsWithoutAWord) {
    Listener listener = recordingListener();
    for (char const* type : {"STATE", "APP", "ADMIN"}) {
        subscribe(listener, "A", type);
    }
    testing::internal::CaptureStdout();
    report(stateEvent("A"));
    EXPECT_EQ("", testing::internal::GetCapturedStdout());
    EXPECT_TRUE(recorded(listener).events.empty());
    EXPECT_TRUE(recorded(listener).stateEvents.empty());
}

TEST_F(EventDispatch, MatchesConnectionNamesExactly) {
    Listener a = recordingListener();
    Listener empty = recordingListener();
    subscribe(a, "A", "APP");
    subscribe(empty, "", "APP");
    report(appEvent("AB"));
    report(appEvent("a"));
    EXPECT_TRUE(recorded(a).events.empty());
    EXPECT_TRUE(recorded(empty).events.empty());
    report(appEvent(""));
    EXPECT_TRUE(recorded(a).events.empty());
    EXPECT_EQ(1u, recorded(empty).events.size());
}

TEST_F(EventDispatch, RefusesUnknownEventTypesAndTellsThem) {
    Listener listener = recordingListener();
    for (std::string const type : {"admin", "App", "", "STATES", "APP "}) {
        try {
            subscribe(listener, "A", type);
            FAIL() << type;
        } catch (ZANInvalidConfigPropertiesException const& e) {
            EXPECT_EQ("Attempt to subscribe to unknown event type: " + type, e.getMessage());
        }
        try {
            unsubscribe(listener, "A", type);
            FAIL() << type;
        } catch (ZANInvalidConfigPropertiesException const& e) {
            EXPECT_EQ("Attempt to unsubscribe from unknown event type: " + type, e.getMessage());
        }
    }
}

TEST_F(EventDispatch, AListenerSubscribedTwiceGetsAnEventOnce) {
    Listener listener = recordingListener();
    subscribe(listener, "A", "APP");
    subscribe(listener, "A", "APP");
    report(appEvent("A"));
    EXPECT_EQ(1u, recorded(listener).events.size());
    unsubscribe(listener, "A", "APP");
    report(appEvent("A"));
    EXPECT_EQ(1u, recorded(listener).events.size());
    EXPECT_EQ(1u, listener.use_count());
}

TEST_F(EventDispatch, EachNameAndTypeIsASubscriptionOfItsOwn) {
    Listener listener = recordingListener();
    subscribe(listener, "A", "APP");
    subscribe(listener, "A", "ADMIN");
    subscribe(listener, "B", "APP");
    unsubscribe(listener, "A", "APP");
    report(appEvent("A"));
    report(adminEvent("A"));
    report(appEvent("B"));
    EXPECT_EQ(2u, recorded(listener).events.size());
}

TEST_F(EventDispatch, UnsubscribingAnUnknownListenerDoesNothing) {
    Listener known = recordingListener();
    Listener unknown = recordingListener();
    subscribe(known, "A", "APP");
    unsubscribe(unknown, "A", "APP");
    unsubscribe(known, "B", "APP");
    report(appEvent("A"));
    EXPECT_EQ(1u, recorded(known).events.size());
}

TEST_F(EventDispatch, AnEmptyListenerCountsOnceAndGetsNothing) {
    Listener empty;
    Listener listener = recordingListener();
    subscribe(empty, "A", "APP");
    subscribe(empty, "A", "APP");
    subscribe(listener, "A", "APP");
    report(appEvent("A"));
    EXPECT_EQ(1u, recorded(listener).events.size());
    unsubscribe(empty, "A", "APP");
}

TEST_F(EventDispatch, KeepsTheOrderOfSubscription) {
    std::string order;
    std::vector<Listener> listeners;
    for (char const name : {'c', 'a', 'b'}) {
        listeners.push_back(recordingListener());
        recorded(listeners.back()).onEvent = [&order, name](auto const&) { order += name; };
        subscribe(listeners.back(), "A", "APP");
    }
    report(appEvent("A"));
    EXPECT_EQ("cab", order);
}

TEST_F(EventDispatch, AListenerThatThrowsEndsTheDeliveryAndReachesTheAdapter) {
    Listener first = recordingListener();
    Listener second = recordingListener();
    recorded(first).onEvent = [](auto const&) { throw std::runtime_error("no"); };
    subscribe(first, "A", "APP");
    subscribe(second, "A", "APP");
    EXPECT_THROW(report(appEvent("A")), std::runtime_error);
    EXPECT_TRUE(recorded(second).events.empty());
    EXPECT_EQ(2u, first.use_count());
    recorded(first).onEvent = nullptr;
    report(appEvent("A"));
    EXPECT_EQ(1u, recorded(second).events.size());
}

TEST_F(EventDispatch, AListenerMayUnsubscribeItself) {
    Listener listener = recordingListener();
    recorded(listener).onEvent = [&](auto const&) { unsubscribe(listener, "A", "APP"); };
    subscribe(listener, "A", "APP");
    report(appEvent("A"));
    report(appEvent("A"));
    EXPECT_EQ(1u, recorded(listener).events.size());
    EXPECT_EQ(1u, listener.use_count());
}

TEST_F(EventDispatch, AListenerSubscribedDuringADeliveryGetsLaterEventsOnly) {
    Listener later = recordingListener();
    Listener listener = recordingListener();
    recorded(listener).onEvent = [&](auto const&) { subscribe(later, "A", "APP"); };
    subscribe(listener, "A", "APP");
    report(appEvent("A"));
    EXPECT_TRUE(recorded(later).events.empty());
    report(appEvent("A"));
    EXPECT_EQ(1u, recorded(later).events.size());
}

TEST_F(EventDispatch, AListenerUnsubscribedDuringADeliveryMayStillGetThatEvent) {
    Listener second = recordingListener();
    Listener first = recordingListener();
    recorded(first).onEvent = [&](auto const&) { unsubscribe(second, "A", "APP"); };
    subscribe(first, "A", "APP");
    subscribe(second, "A", "APP");
    report(appEvent("A"));
    report(appEvent("A"));
    EXPECT_EQ(1u, recorded(second).events.size());
}

class LastWish : public IZANEventListener {
public:
    LastWish(ZANEngineProxy& proxy, bool& ended) : proxy_(proxy), ended_(ended) {}
    ~LastWish() override {
        // Would deadlock if another thread held the lock, and shows that none of ours is held.
        Listener other = recordingListener();
        proxy_.subscribe(UserTicket(), other, "B", "APP");
        ended_ = true;
    }
    void processEvent(counted_ptr<ZANEvent>) override {
        EXPECT_FALSE(ended_);
        proxy_.unsubscribe(UserTicket(), *self, "A", "APP");
        self->reset();
        EXPECT_FALSE(ended_);
    }
    Listener* self = nullptr;

private:
    ZANEngineProxy& proxy_;
    bool& ended_;
};

TEST_F(EventDispatch, AListenerThatItsOwnUnsubscribingEndsLivesUntilItsCallbackReturns) {
    bool ended = false;
    Listener listener(new LastWish(engine.proxy(), ended));
    static_cast<LastWish&>(*listener).self = &listener;
    subscribe(listener, "A", "APP");
    report(appEvent("A"));
    EXPECT_TRUE(ended);
    EXPECT_FALSE(listener);
}

TEST_F(EventDispatch, AListenerMayCallTheEngine) {
    Listener listener = recordingListener();
    recorded(listener).onEvent = [&](auto const&) {
        engine.proxy().sendMessage(ticket, "A", std::string("35=D"));
    };
    subscribe(listener, "A", "APP");
    report(appEvent("A"));
    EXPECT_EQ(1u, engine.adapter().calls().size());
}

TEST_F(EventDispatch, AnEventFromInsideAForwardedCallMayComeBackToTheEngine) {
    Listener listener = recordingListener();
    int nested = 0;
    recorded(listener).onEvent = [&](auto const&) {
        engine.proxy().isConnected(ticket, "A");
        ++nested;
    };
    subscribe(listener, "A", "APP");
    bool reported = false;
    engine.adapter().onCall = [&] {
        if (!std::exchange(reported, true)) {
            report(appEvent("A"));
        }
    };
    engine.proxy().sendMessage(ticket, "A", std::string("35=D"));
    EXPECT_EQ(1, nested);
    EXPECT_EQ(2u, engine.adapter().calls().size());
}

TEST_F(EventDispatch, TellsAnEventOfAnUnknownClass) {
    class StrangeEvent : public ZANEvent {
    public:
        StrangeEvent() : ZANEvent("A", nullptr, false) {}
    };
    Listener listener = recordingListener();
    subscribe(listener, "A", "APP");
    testing::internal::CaptureStdout();
    report(counted_ptr<ZANEvent>(new StrangeEvent));
    report(counted_ptr<ZANEvent>(new ZANEvent("A", nullptr, true)));
    std::string const output = testing::internal::GetCapturedStdout();
    EXPECT_EQ(0u, output.find("Received event of unknown type: "));
    EXPECT_NE(std::string::npos, output.find("StrangeEvent"));
    EXPECT_NE(std::string::npos, output.find("\nReceived event of unknown type: ZANEvent\n"));
    EXPECT_TRUE(recorded(listener).events.empty());
}

TEST_F(EventDispatch, DeliversEventsOfDerivedClasses) {
    struct OwnEvent : ZANAdminMessageEvent {
        using ZANAdminMessageEvent::ZANAdminMessageEvent;
    };
    struct OwnState : ZANConnectionStateEvent {
        using ZANConnectionStateEvent::ZANConnectionStateEvent;
    };
    Listener listener = recordingListener();
    subscribe(listener, "A", "ADMIN");
    testing::internal::CaptureStdout();
    report(counted_ptr<ZANEvent>(new OwnEvent("A", nullptr)));
    report(counted_ptr<ZANEvent>(new OwnState("A", nullptr)));
    EXPECT_EQ("", testing::internal::GetCapturedStdout());
    EXPECT_EQ(1u, recorded(listener).events.size());
}

TEST_F(EventDispatch, RefusesAnEventWithoutAnObject) {
    EXPECT_THROW(report(nullptr), ZANEngineException);
}

TEST_F(EventDispatch, GivesEachListenerItsOwnReferenceAndLetsAllGo) {
    Listener first = recordingListener();
    Listener second = recordingListener();
    subscribe(first, "A", "APP");
    subscribe(second, "A", "APP");
    auto const event = appEvent("A");
    report(event);
    EXPECT_EQ(3u, event.use_count());
    recorded(first).events.clear();
    recorded(second).events.clear();
    EXPECT_EQ(1u, event.use_count());
    EXPECT_EQ(2u, first.use_count());
}

TEST(ProxyShutdown, AListenerMayUninitializeTheProxyInsideItsCallback) {
    counted_ptr<IZANEngineAdapter> const adapter(new RecordingAdapter);
    ZANEngineProxy::initialize(emptyConfigProvider(),
                               counted_ptr<IZANEngineAdapterFactory>(new TestFactory(adapter)));
    Listener first = recordingListener();
    Listener second = recordingListener();
    recorded(first).onEvent = [](auto const&) { ZANEngineProxy::uninitialize(); };
    UserTicket const ticket;
    ZANEngineProxy::getInstance().subscribe(ticket, first, "A", "APP");
    ZANEngineProxy::getInstance().subscribe(ticket, second, "A", "APP");
    static_cast<RecordingAdapter&>(*adapter).report(appEvent("A"));
    EXPECT_FALSE(ZANEngineProxy::isInitialized());
    EXPECT_EQ(1u, recorded(second).events.size());
    EXPECT_EQ(1u, first.use_count());
    EXPECT_EQ(1u, second.use_count());
}

TEST(ProxyShutdown, AListenerThatUninitializesTheProxyEndsAfterIt) {
    class Ender : public IZANEventListener {
    public:
        explicit Ender(bool& endedAfterTheProxy) : endedAfterTheProxy_(endedAfterTheProxy) {}
        Ender(Ender const&) = delete;
        Ender& operator=(Ender const&) = delete;
        ~Ender() override { endedAfterTheProxy_ = ValuePresentation::Instance_ == nullptr; }
        void processEvent(counted_ptr<ZANEvent>) override { ZANEngineProxy::uninitialize(); }

    private:
        bool& endedAfterTheProxy_;
    };
    counted_ptr<IZANEngineAdapter> const adapter(new RecordingAdapter);
    ZANEngineProxy::initialize(emptyConfigProvider(),
                               counted_ptr<IZANEngineAdapterFactory>(new TestFactory(adapter)));
    bool endedAfterTheProxy = false;
    Listener listener(new Ender(endedAfterTheProxy));
    ZANEngineProxy::getInstance().subscribe(UserTicket(), listener, "A", "APP");
    listener.reset();
    static_cast<RecordingAdapter&>(*adapter).report(appEvent("A"));
    EXPECT_TRUE(endedAfterTheProxy);
}

} // namespace
