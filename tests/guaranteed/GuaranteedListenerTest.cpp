#include "errors/ZANEngineException.h"
#include "errors/ZANInvalidMessageException.h"
#include "events/ZANAppMessageEvent.h"
#include "guaranteed/ZANGMLAdapter.h"
#include "guaranteed/ZANGuaranteedEngineMessageListener.h"
#include "infra/WrongConfigurationException.h"
#include "support/CapturedOutput.h"
#include "support/RecordingGML.h"
#include "support/RecordingListener.h"
#include "support/RunningEngine.h"
#include "support/Slots.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

using Listener = ZANGuaranteedEngineMessageListener;
using ListenerPtr = counted_ptr<IZANEventListener>;

/// The facade over a transport that offers guaranteed delivery.
class GuaranteedListener : public testing::Test {
protected:
    GuaranteedListener() : factory_(new RecordingGMLFactory) {
        engine_->adapter().gmlFactory.reset(factory_);
    }

    RecordingGMLFactory& factory() { return *factory_; }
    RecordingGMLAdapter& gml() { return factory_->adapter; }
    RecordingListener& recording() { return static_cast<RecordingListener&>(*listener_); }

    std::unique_ptr<RunningEngine> engine_ = std::make_unique<RunningEngine>();
    RecordingGMLFactory* factory_;
    ListenerPtr listener_{new RecordingListener};
};

TEST_F(GuaranteedListener, PassesEventsToTheApplicationsListener) {
    Listener guaranteed(listener_);
    counted_ptr<ZANEvent> const event(new ZANAppMessageEvent("DEMO", nullptr));
    counted_ptr<ZANConnectionStateEvent> const stateEvent(
        new ZANConnectionStateEvent("DEMO", nullptr));
    guaranteed.processEvent(event);
    guaranteed.processStateEvent(stateEvent);
    EXPECT_EQ(recording().events, (std::vector<counted_ptr<ZANEvent>>{event}));
    EXPECT_EQ(recording().stateEvents,
              (std::vector<counted_ptr<ZANConnectionStateEvent>>{stateEvent}));
    EXPECT_TRUE(gml().calls.empty());
}

TEST_F(GuaranteedListener, ExceptionOfTheListenerPasses) {
    Listener guaranteed(listener_);
    recording().onEvent = [](auto const&) { throw std::runtime_error("full"); };
    EXPECT_THROW(guaranteed.processEvent(nullptr), std::runtime_error);
}

TEST_F(GuaranteedListener, WithoutAListenerDropsEvents) {
    for (auto const& none :
         {ListenerPtr(), ListenerPtr(static_cast<RecordingListener*>(nullptr))}) {
        Listener guaranteed(none);
        counted_ptr<ZANEvent> const event(new ZANAppMessageEvent("DEMO", nullptr));
        counted_ptr<ZANConnectionStateEvent> const stateEvent(
            new ZANConnectionStateEvent("DEMO", nullptr));
        guaranteed.processEvent(event);
        guaranteed.processStateEvent(stateEvent);
        EXPECT_EQ(event.use_count(), 1u);
        EXPECT_EQ(stateEvent.use_count(), 1u);
    }
}

TEST_F(GuaranteedListener, EachMarkGoesToItsStream) {
    Listener guaranteed(listener_);
    guaranteed.setLastConsumedAdminMessageFromCounterPartyId("A", 1);
    guaranteed.setLastConsumedAdminMessageToCounterPartyId("B", 2);
    guaranteed.setLastConsumedAppMessageFromCounterPartyId("C", -3);
    guaranteed.setLastConsumedAppMessageToCounterPartyId("DEMO", 7);
    guaranteed.setLastConsumedResentMessageId("", 0);
    EXPECT_EQ(gml().calls,
              (std::vector<std::string>{callText("setLastConsumedMessage", "A", 1, 0),
                                        callText("setLastConsumedMessage", "B", 2, 1),
                                        callText("setLastConsumedMessage", "C", -3, 2),
                                        callText("setLastConsumedMessage", "DEMO", 7, 3),
                                        callText("setLastConsumedMessage", "", 0, 4)}));
}

TEST_F(GuaranteedListener, StreamsHaveTheirNumbers) {
    EXPECT_EQ(Listener::ADMIN_MSG_FROM_COUNTERPARTY, 0);
    EXPECT_EQ(Listener::ADMIN_MSG_TO_COUNTERPARTY, 1);
    EXPECT_EQ(Listener::APP_MSG_FROM_COUNTERPARTY, 2);
    EXPECT_EQ(Listener::APP_MSG_TO_COUNTERPARTY, 3);
    EXPECT_EQ(Listener::RESENT_MSG, 4);
    EXPECT_EQ(sizeof(Listener::MessageTypeIds), sizeof(int));
}

TEST_F(GuaranteedListener, DerivedListenerMarksAnyStream) {
    struct Derived : Listener {
        using Listener::Listener;
        using Listener::setLastConsumedMessage;
    };
    Derived guaranteed(listener_);
    guaranteed.setLastConsumedMessage("DEMO", 9, Listener::RESENT_MSG);
    EXPECT_EQ(gml().calls,
              (std::vector<std::string>{callText("setLastConsumedMessage", "DEMO", 9, 4)}));
}

TEST_F(GuaranteedListener, ForwardsRecoveryAndFilters) {
    Listener guaranteed(listener_);
    guaranteed.retrievePotentiallyLostMessages();
    guaranteed.setSubscriptionFilter("type = '8'");
    guaranteed.resetSubscriptionFilter();
    EXPECT_EQ(gml().calls,
              (std::vector<std::string>{callText("retrievePotentiallyLostMessages"),
                                        callText("setSubscriptionFilter", "type = '8'"),
                                        callText("resetSubscriptionFilter")}));
}

TEST_F(GuaranteedListener, ReturnsTheFilterOfTheAdapter) {
    Listener guaranteed(listener_);
    EXPECT_EQ(guaranteed.getSubscriptionFilter(), "");
    gml().filter = "type = '8'";
    EXPECT_EQ(guaranteed.getSubscriptionFilter(), "type = '8'");
}

TEST_F(GuaranteedListener, HandsOutTheAdapterItself) {
    Listener guaranteed(listener_);
    EXPECT_EQ(&guaranteed.getAdapter(), &gml());
}

TEST_F(GuaranteedListener, AsksForOneAdapterAndGivesItBack) {
    {
        Listener guaranteed(listener_);
        EXPECT_EQ(factory().listeners, (std::vector<Listener*>{&guaranteed}));
        EXPECT_TRUE(factory().returned.empty());
        EXPECT_EQ(listener_.use_count(), 2u);
    }
    EXPECT_EQ(factory().returned, (std::vector<ZANGMLAdapter*>{&gml()}));
    EXPECT_EQ(listener_.use_count(), 1u);
}

TEST_F(GuaranteedListener, CopySharesListenerAndAdapterAndGivesItBackToo) {
    {
        Listener guaranteed(listener_);
        Listener const copy(guaranteed);
        EXPECT_EQ(listener_.use_count(), 3u);
        EXPECT_EQ(factory().listeners.size(), 1u);
    }
    EXPECT_EQ(factory().returned, (std::vector<ZANGMLAdapter*>{&gml(), &gml()}));
    EXPECT_EQ(listener_.use_count(), 1u);
}

TEST_F(GuaranteedListener, AssignmentSharesListenerAndAdapterWithoutAskingTheFactory) {
    Listener guaranteed(listener_);
    ListenerPtr const other(new RecordingListener);
    Listener assigned(other);
    assigned = guaranteed;
    assigned.processEvent(nullptr);
    EXPECT_EQ(recording().events.size(), 1u);
    EXPECT_EQ(other.use_count(), 1u);
    EXPECT_EQ(&assigned.getAdapter(), &gml());
    EXPECT_EQ(factory().listeners.size(), 2u);
    EXPECT_TRUE(factory().returned.empty());
}

TEST_F(GuaranteedListener, TellsAFactoryHowManyShareAnAdapter) {
    auto const sharing = [this] { return ZANGMLAdapterFactory::listenersOf(&gml()); };
    std::vector<std::size_t> whenReturned;
    factory().onDelete = [&] { whenReturned.push_back(sharing()); };
    EXPECT_EQ(sharing(), 0u);
    {
        std::vector<Listener> listeners;
        listeners.reserve(2);
        listeners.emplace_back(listener_);
        listeners.push_back(listeners.front());
        EXPECT_EQ(sharing(), 2u);
        listeners.front() = listeners.back();
        EXPECT_EQ(sharing(), 2u);
        Listener const copy(listeners.back());
        EXPECT_EQ(sharing(), 3u);
    }
    EXPECT_EQ(whenReturned, (std::vector<std::size_t>{3, 2, 1}));
    EXPECT_EQ(sharing(), 0u);
    EXPECT_EQ(ZANGMLAdapterFactory::listenersOf(nullptr), 0u);
}

counted_ptr<ZANEvent> eventOf(std::vector<std::pair<int, int>> const& fields) {
    counted_ptr<ZANFieldGroup> const group(new ZANFieldGroup("8"));
    for (auto const& [tag, value] : fields) {
        group->setFieldValue(tag, value);
    }
    counted_ptr<ZANMessage> const message(new ZANMessage(group));
    return counted_ptr<ZANEvent>(new ZANAppMessageEvent("DEMO", message));
}

TEST_F(GuaranteedListener, MarksTheMessageOfAnEventInItsStream) {
    Listener guaranteed(listener_);
    auto const event = eventOf({{ZANMessage::CONNECTION_MESSAGE_ID_TAG, 7},
                                {ZANMessage::STREAM_TAG, Listener::RESENT_MSG}});
    guaranteed.consumed(event);
    guaranteed.consumed(*event);
    guaranteed.skip(event);
    guaranteed.skip(*event);
    guaranteed.skip("A", 9, Listener::APP_MSG_FROM_COUNTERPARTY);
    std::string const mark = callText("setLastConsumedMessage", "DEMO", 7, 4);
    EXPECT_EQ(gml().calls,
              (std::vector<std::string>{mark, mark, mark, mark,
                                        callText("setLastConsumedMessage", "A", 9, 2)}));
}

TEST_F(GuaranteedListener, MarksNoMessageThatTellsNoStreamOrNumber) {
    Listener guaranteed(listener_);
    for (auto const& event : {counted_ptr<ZANEvent>(new ZANAppMessageEvent("DEMO", nullptr)),
                              counted_ptr<ZANEvent>(new ZANAppMessageEvent(
                                  "DEMO", counted_ptr<ZANMessage>(new ZANMessage))),
                              eventOf({}), eventOf({{ZANMessage::STREAM_TAG, 2}}),
                              eventOf({{ZANMessage::CONNECTION_MESSAGE_ID_TAG, 7}})}) {
        EXPECT_THROW(guaranteed.consumed(event), ZANInvalidMessageException);
        EXPECT_THROW(guaranteed.skip(event), ZANInvalidMessageException);
    }
    EXPECT_TRUE(gml().calls.empty());
}

TEST_F(GuaranteedListener, MayEndWithTheAdapterThatHoldsItLast) {
    struct Holder : RecordingAdapter {
        counted_ptr<Listener> held;
    };
    engine_.reset();
    auto* const adapter = new Holder;
    ZANEngineProxy::initialize(emptyConfigProvider(),
                               counted_ptr<IZANEngineAdapterFactory>(
                                   new TestFactory(counted_ptr<IZANEngineAdapter>(adapter))));
    adapter->gmlFactory = std::make_unique<RecordingGMLFactory>();
    adapter->held = counted_ptr<Listener>(new Listener(listener_));
    CapturedOutput const output;
    EXPECT_NO_THROW(ZANEngineProxy::uninitialize());
    EXPECT_EQ(output.text(), "");
    EXPECT_EQ(listener_.use_count(), 1u);
}

TEST_F(GuaranteedListener, EndsSilentlyAfterTheFacade) {
    auto guaranteed = std::make_unique<Listener>(listener_);
    engine_.reset();
    CapturedOutput const output;
    EXPECT_NO_THROW(guaranteed.reset());
    EXPECT_EQ(output.text(), "");
    EXPECT_EQ(listener_.use_count(), 1u);
}

TEST_F(GuaranteedListener, EndsSilentlyWhenTheEngineFailsToTakeTheAdapterBack) {
    factory().onDelete = [] { throw ZANEngineException("gone"); };
    CapturedOutput const output;
    EXPECT_NO_THROW({ Listener guaranteed(listener_); });
    EXPECT_EQ(output.text(), "");
    EXPECT_EQ(listener_.use_count(), 1u);
}

TEST_F(GuaranteedListener, TellsOtherFailuresOfTheLibraryOnStandardOutput) {
    factory().onDelete = [] { throw WrongConfigurationException("no such key"); };
    CapturedOutput const output;
    EXPECT_NO_THROW({ Listener guaranteed(listener_); });
    std::string const expected =
        "Caught an exception while destroing ZANGuaranteedEngineMessageListener: no such key\n";
    EXPECT_EQ(output.text(), expected);
    EXPECT_EQ(output.flushedText(), expected);
    EXPECT_EQ(listener_.use_count(), 1u);
}

TEST_F(GuaranteedListener, ForeignExceptionLeavesTheDestructor) {
    factory().onDelete = [] { throw std::runtime_error("foreign"); };
    EXPECT_FALSE(std::is_nothrow_destructible_v<Listener>);
    EXPECT_THROW({ Listener guaranteed(listener_); }, std::runtime_error);
    EXPECT_EQ(listener_.use_count(), 1u);
}

using GuaranteedListenerDeathTest = GuaranteedListener;

TEST_F(GuaranteedListenerDeathTest, ForeignExceptionUnderACountedPointerEndsTheProcess) {
    counted_ptr<Listener> guaranteed(new Listener(listener_));
    EXPECT_DEATH(
        {
            factory().onDelete = [] { throw std::runtime_error("foreign"); };
            counted_ptr<Listener> const last(std::move(guaranteed));
            // `last` goes out of scope here.
        },
        "");
}

TEST_F(GuaranteedListener, FailureOfTheFactoryAbortsConstruction) {
    struct Failing : RecordingGMLFactory {
        ZANGMLAdapter* newGMLAdapter(Listener*) override { throw ZANEngineException("full"); }
    };
    engine_->adapter().gmlFactory = std::make_unique<Failing>();
    EXPECT_THROW(Listener{listener_}, ZANEngineException);
    EXPECT_EQ(listener_.use_count(), 1u);
}

TEST(GuaranteedListenerWithoutFacade, CannotBeBuilt) {
    ListenerPtr const listener(new RecordingListener);
    try {
        Listener guaranteed(listener);
        FAIL() << "nothing was thrown";
    } catch (ZANEngineException const& e) {
        EXPECT_EQ(e.getMessage(), "Proxy was not initialized!");
    }
    EXPECT_EQ(listener.use_count(), 1u);
}

TEST(DefaultGMLFactory, SaysThatItMakesNoAdapter) {
    RunningEngine const engine;
    std::string const made =
        "ZANGMLAdapterFactory::newGMLAdapter(): default implementation called.\n";
    std::string const deleted =
        "ZANGMLAdapterFactory::deleteGMLAdapter(): default implementation called.\n";
    CapturedOutput const output;
    {
        Listener const guaranteed{ListenerPtr()};
        EXPECT_EQ(output.text(), made);
        EXPECT_EQ(output.flushedText(), made);
    }
    EXPECT_EQ(output.text(), made + deleted);
    EXPECT_EQ(output.flushedText(), made + deleted);
}

TEST(DefaultGMLFactory, MakesNothingAndDeletesNothing) {
    CapturedOutput const output;
    ZANGMLAdapterFactory factory;
    RecordingGMLAdapter adapter;
    EXPECT_EQ(factory.newGMLAdapter(nullptr), nullptr);
    factory.deleteGMLAdapter(&adapter);
    adapter.retrievePotentiallyLostMessages();
    EXPECT_EQ(adapter.calls.size(), 1u);
}

TEST(DefaultGMLFactory, EventsPassWithoutAnAdapter) {
    RunningEngine const engine;
    CapturedOutput const output;
    ListenerPtr const listener(new RecordingListener);
    Listener guaranteed(listener);
    guaranteed.processEvent(nullptr);
    EXPECT_EQ(static_cast<RecordingListener&>(*listener).events.size(), 1u);
}

TEST(GuaranteedSlots, StandInTheOrderThatTransportsWereBuiltWith) {
    EXPECT_EQ(slotOf(&Listener::processEvent), 2u);
    EXPECT_EQ(slotOf(&Listener::processStateEvent), 3u);
    EXPECT_EQ(slotOf(&ZANGMLAdapterFactory::newGMLAdapter), 2u);
    EXPECT_EQ(slotOf(&ZANGMLAdapterFactory::deleteGMLAdapter), 3u);
    EXPECT_EQ(slotOf(&ZANGMLAdapter::setLastConsumedMessage), 2u);
    EXPECT_EQ(slotOf(&ZANGMLAdapter::retrievePotentiallyLostMessages), 3u);
    EXPECT_EQ(slotOf(&ZANGMLAdapter::setSubscriptionFilter), 4u);
    EXPECT_EQ(slotOf(&ZANGMLAdapter::getSubscriptionFilter), 5u);
    EXPECT_EQ(slotOf(&ZANGMLAdapter::resetSubscriptionFilter), 6u);
    EXPECT_EQ(slotOf(&ZANGMLAdapter::getLastConsumedMessage), 7u);
    EXPECT_EQ(slotOf(&ZANGMLAdapter::resetConsumedMessages), 8u);
    EXPECT_EQ(slotOf(&ZANGMLAdapter::flush), 9u);
    EXPECT_EQ(slotOf(&ZANGMLAdapter::getSubscriberName), 10u);
}

} // namespace
