// Guaranteed listeners: marks, filters, and what may have been lost.
#include "EmbeddedFixture.h"

#include "errors/ZANConnectionUnknownException.h"
#include "errors/ZANEngineException.h"
#include "errors/ZANInvalidMessageException.h"
#include "guaranteed/ZANGMLAdapter.h"
#include "guaranteed/ZANGuaranteedEngineMessageListener.h"

namespace {

class GuaranteedDeliveryTest : public EmbeddedTest {
protected:
    using Guaranteed = counted_ptr<ZANGuaranteedEngineMessageListener>;
    static constexpr auto fromThem = ZANGuaranteedEngineMessageListener::APP_MSG_FROM_COUNTERPARTY;

    void startEngineFor(std::string const& client) {
        ZANEngineProxy::initialize(Url("embedded:" + writeSessionFile(sessionText()) +
                                       (client.empty() ? std::string() : "?client=" + client)));
    }

    /// A guaranteed listener on application messages, and where its events go.
    Guaranteed attach(EventRecorder*& recorder, UserTicket const& ticket = me) {
        recorder = new EventRecorder;
        Guaranteed listener(
            new ZANGuaranteedEngineMessageListener(counted_ptr<IZANEventListener>(recorder)));
        engine().subscribeDirect(ticket, "C", false, true, true, listener);
        return listener;
    }

    void detach(Guaranteed& listener) {
        engine().destroyDirectSubscriber(listener);
        listener.reset();
    }

    static std::string idsOf(EventRecorder& recorder, bool mayBeLost) {
        std::string text;
        for (SeenEvent const& event : recorder.events()) {
            if (event.isType("8") && (event.field(97) == "Y") == mayBeLost) {
                text += (text.empty() ? "" : " ") + event.field(11);
            }
        }
        return text;
    }
};

TEST_F(GuaranteedDeliveryTest, DeliversLikeADirectListener) {
    startAndConnect();
    EventRecorder* recorder = nullptr;
    Guaranteed listener = attach(recorder);
    engine().sendMessage(me, "C", order("one"));
    EXPECT_TRUE(recorder->waitFor(isReport));
    engine().unsubscribeDirect(me, "C", false, true, false, listener);
    engine().sendMessage(me, "C", order("two"));
    engine().disconnect(me, "C", "");
    EXPECT_TRUE(recorder->waitFor([](SeenEvent const& e) { return e.flags & FLAG_DISCONNECTED; }));
    EXPECT_EQ(idsOf(*recorder, false), "one");
    detach(listener);
}

TEST_F(GuaranteedDeliveryTest, DeliversAgainWhatLiesAboveTheMarks) {
    startAcceptor();
    startEngineFor("desk");
    engine().connect(me, "C");
    EventRecorder* recorder = nullptr;
    Guaranteed listener = attach(recorder);
    for (char const* id : {"one", "two", "three"}) {
        engine().sendMessage(me, "C", order(id));
    }
    ASSERT_TRUE(recorder->waitFor(isReport, 3));
    int const second =
        recorder->first([](SeenEvent const& e) { return isReport(e) && e.field(11) == "two"; }).id;
    listener->setLastConsumedAppMessageFromCounterPartyId("C", second);
    detach(listener);
    ZANEngineProxy::uninitialize();

    startEngineFor("desk");
    listener = attach(recorder);
    EXPECT_EQ(listener->getAdapter().getLastConsumedMessage("C", fromThem), second);
    EXPECT_EQ(listener->getAdapter().getSubscriberName(), "desk");
    listener->retrievePotentiallyLostMessages();
    EXPECT_EQ(idsOf(*recorder, true), "three");
    detach(listener);
}

TEST_F(GuaranteedDeliveryTest, KeepsNewMessagesBehindTheOnesThatMayBeLost) {
    startAndConnect();
    EventRecorder* recorder = nullptr;
    Guaranteed listener = attach(recorder);
    for (int i = 0; i < 200; ++i) {
        engine().sendMessage(me, "C", order("old" + std::to_string(i)));
    }
    ASSERT_TRUE(recorder->waitFor(isReport, 200));
    detach(listener);
    listener = attach(recorder);
    std::thread sender([] {
        for (int i = 0; i < 100; ++i) {
            engine().sendMessage(me, "C", order("new" + std::to_string(i)));
        }
    });
    listener->retrievePotentiallyLostMessages();
    sender.join();
    ASSERT_TRUE(recorder->waitFor(
        [](SeenEvent const& e) { return isReport(e) && e.field(11) == "new99"; }));
    // One run of messages again, in order and without a live one among them.
    std::vector<SeenEvent> const events = recorder->events();
    auto const isAgain = [](SeenEvent const& e) { return e.field(97) == "Y"; };
    auto const first = std::find_if(events.begin(), events.end(), isAgain);
    auto const end = std::find_if_not(first, events.end(), isAgain);
    EXPECT_EQ(std::find_if(end, events.end(), isAgain), events.end());
    EXPECT_GE(end - first, 400);
    EXPECT_TRUE(std::is_sorted(first, end,
                               [](SeenEvent const& a, SeenEvent const& b) { return a.id < b.id; }));
    for (auto live = end; live != events.end(); ++live) {
        EXPECT_GT(live->id, std::prev(end)->id);
    }
    detach(listener);
}

TEST_F(GuaranteedDeliveryTest, NeverMovesAMarkBack) {
    startAcceptor();
    startEngine();
    EventRecorder* recorder = nullptr;
    Guaranteed listener = attach(recorder);
    ZANGMLAdapter& adapter = listener->getAdapter();
    EXPECT_EQ(adapter.getLastConsumedMessage("C", fromThem), -1);
    listener->setLastConsumedAppMessageFromCounterPartyId("C", 7);
    listener->setLastConsumedAppMessageFromCounterPartyId("C", 5);
    EXPECT_EQ(adapter.getLastConsumedMessage("C", fromThem), 7);
    EXPECT_EQ(adapter.getLastConsumedMessage(
                  "C", ZANGuaranteedEngineMessageListener::APP_MSG_TO_COUNTERPARTY),
              -1);
    adapter.resetConsumedMessages("C");
    EXPECT_EQ(adapter.getLastConsumedMessage("C", fromThem), -1);
    adapter.flush();
    detach(listener);
}

TEST_F(GuaranteedDeliveryTest, TakesItsNameFromTheTicket) {
    startAcceptor();
    startEngineFor("");
    EventRecorder* recorder = nullptr;
    Guaranteed listener(
        new ZANGuaranteedEngineMessageListener(counted_ptr<IZANEventListener>(new EventRecorder)));
    EXPECT_EQ(listener->getAdapter().getSubscriberName(), "");
    listener->setLastConsumedAppMessageFromCounterPartyId("C", 3);
    EXPECT_EQ(listener->getAdapter().getLastConsumedMessage("C", fromThem), 3);
    engine().subscribeDirect(UserTicket("alice", ""), "C", true, true, true, listener);
    EXPECT_EQ(listener->getAdapter().getSubscriberName(), "alice");
    Guaranteed other = attach(recorder, UserTicket("bob", ""));
    EXPECT_EQ(other->getAdapter().getLastConsumedMessage("C", fromThem), -1);
    Guaranteed same = attach(recorder, UserTicket("alice", ""));
    EXPECT_EQ(same->getAdapter().getLastConsumedMessage("C", fromThem), 3);
    for (Guaranteed* each : {&listener, &other, &same}) {
        detach(*each);
    }
}

TEST_F(GuaranteedDeliveryTest, NarrowsWhatItDeliversByAFilter) {
    startAndConnect();
    EventRecorder* recorder = nullptr;
    Guaranteed listener = attach(recorder);
    listener->setSubscriptionFilter("type = '8' AND tag(11) LIKE 'b%'");
    EXPECT_EQ(listener->getSubscriptionFilter(), "type = '8' AND tag(11) LIKE 'b%'");
    EventRecorder& all = record();
    for (char const* id : {"a1", "b1", "a2", "b2"}) {
        engine().sendMessage(me, "C", order(id));
    }
    ASSERT_TRUE(all.waitFor(isReport, 4));
    ASSERT_TRUE(recorder->waitFor(isReport, 2));
    EXPECT_EQ(idsOf(*recorder, false), "b1 b2");
    listener->retrievePotentiallyLostMessages();
    EXPECT_EQ(idsOf(*recorder, true), "b1 b2");
    listener->resetSubscriptionFilter();
    EXPECT_EQ(listener->getSubscriptionFilter(), "");
    listener->retrievePotentiallyLostMessages();
    EXPECT_EQ(idsOf(*recorder, true), "b1 b2 a1 b1 a2 b2");
    detach(listener);
}

TEST_F(GuaranteedDeliveryTest, RefusesAFilterThatIsNoExpression) {
    startAcceptor();
    startEngine();
    EventRecorder* recorder = nullptr;
    Guaranteed listener = attach(recorder);
    EXPECT_THROW(listener->setSubscriptionFilter("type ="), ZANInvalidMessageException);
    EXPECT_EQ(listener->getSubscriptionFilter(), "");
    detach(listener);
}

TEST_F(GuaranteedDeliveryTest, RefusesMarksThatMakeNoSense) {
    startAcceptor();
    startEngine();
    EventRecorder* recorder = nullptr;
    Guaranteed listener = attach(recorder);
    EXPECT_THROW(listener->setLastConsumedResentMessageId("X", 1), ZANConnectionUnknownException);
    EXPECT_THROW(listener->setLastConsumedResentMessageId("C", -2), ZANInvalidMessageException);
    detach(listener);
}

TEST_F(GuaranteedDeliveryTest, AsksForLostMessagesFromInsideAListener) {
    startAndConnect();
    EventRecorder* recorder = nullptr;
    Guaranteed listener = attach(recorder);
    // The first event may be the logon, before which there is nothing to be lost.
    int timesToAsk = 3;
    recorder->onEvent = [&] {
        if (timesToAsk-- > 0) {
            listener->retrievePotentiallyLostMessages();
        }
    };
    engine().sendMessage(me, "C", order("one"));
    EXPECT_TRUE(recorder->waitFor([](SeenEvent const& e) { return e.field(97) == "Y"; }));
    engine().disconnect(me, "C", "");
    engine().destroyDirectSubscriber(listener);
    ZANEngineProxy::uninitialize();
    listener.reset();
}

TEST_F(GuaranteedDeliveryTest, OutlivesTheEngine) {
    startAcceptor();
    startEngine();
    EventRecorder* recorder = nullptr;
    Guaranteed listener = attach(recorder);
    ZANEngineProxy::uninitialize();
    EXPECT_THROW(listener->retrievePotentiallyLostMessages(), ZANEngineException);
    EXPECT_EQ(listener->getSubscriptionFilter(), "");
    listener.reset();
}

} // namespace
