// Guaranteed listeners: marks, filters, and what may have been lost.
#include "EmbeddedFixture.h"

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

} // namespace
