// Copies of guaranteed listeners: they share what the engine keeps for them.
#include "EmbeddedFixture.h"

#include "guaranteed/ZANGMLAdapter.h"
#include "guaranteed/ZANGuaranteedEngineMessageListener.h"

namespace {

using Listener = ZANGuaranteedEngineMessageListener;
using ListenerCopiesTest = EmbeddedTest;

TEST_F(ListenerCopiesTest, LiveInAVectorThatGrows) {
    startAcceptor();
    startEngine();
    std::vector<Listener> listeners;
    for (int i = 0; i < 100; ++i) {
        listeners.emplace_back(counted_ptr<IZANEventListener>(new EventRecorder));
        listeners.back().setSubscriptionFilter("id = " + std::to_string(i));
    }
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(listeners[i].getSubscriptionFilter(), "id = " + std::to_string(i));
        listeners[i].setLastConsumedAppMessageFromCounterPartyId("C", i);
    }
}

TEST_F(ListenerCopiesTest, ThatAreStaleHarmNoListenerOfALaterEngine) {
    startAcceptor();
    startEngine();
    auto stale = std::make_unique<Listener>(counted_ptr<IZANEventListener>());
    auto const copy = std::make_unique<Listener>(*stale);
    for (int i = 0; i < 3; ++i) {
        ZANEngineProxy::uninitialize();
        EXPECT_THROW(copy->setLastConsumedAppMessageFromCounterPartyId("C", 1), ZANEngineException);
        startEngine();
        std::vector<Listener> fresh;
        for (int j = 0; j < 20; ++j) {
            fresh.emplace_back(counted_ptr<IZANEventListener>());
            fresh.back().setSubscriptionFilter("id = " + std::to_string(j));
        }
        if (i == 1) {
            stale.reset();
        }
        { Listener const another(*copy); }
        for (int j = 0; j < 20; ++j) {
            EXPECT_EQ(fresh[j].getSubscriptionFilter(), "id = " + std::to_string(j));
        }
    }
}

TEST_F(ListenerCopiesTest, GetEventsAfterTheOriginalHasGone) {
    startAndConnect();
    auto* const recorder = new EventRecorder;
    auto original = std::make_unique<Listener>(counted_ptr<IZANEventListener>(recorder));
    counted_ptr<Listener> copy(new Listener(*original));
    original.reset();
    engine().subscribeDirect(me, "C", false, true, false, copy);
    engine().sendMessage(me, "C", order("one"));
    ASSERT_TRUE(recorder->waitFor(isReport));
    copy->retrievePotentiallyLostMessages();
    EXPECT_TRUE(recorder->waitFor([](SeenEvent const& e) { return e.field(97) == "Y"; }));
    engine().destroyDirectSubscriber(copy);
}

TEST_F(ListenerCopiesTest, GoOnWithALaterEngine) {
    startAndConnect();
    auto* const recorder = new EventRecorder;
    counted_ptr<Listener> listener(new Listener(counted_ptr<IZANEventListener>(recorder)));
    ZANEngineProxy::uninitialize();
    startEngine();
    engine().connect(me, "C");
    engine().subscribeDirect(me, "C", false, true, false, listener);
    engine().sendMessage(me, "C", order("one"));
    ASSERT_TRUE(recorder->waitFor(isReport));
    listener->setLastConsumedAppMessageFromCounterPartyId("C", 1);
    EXPECT_EQ(
        listener->getAdapter().getLastConsumedMessage("C", Listener::APP_MSG_FROM_COUNTERPARTY), 1);
    engine().destroyDirectSubscriber(listener);
}

} // namespace
