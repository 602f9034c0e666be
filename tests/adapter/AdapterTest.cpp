#include "adapter/ZANEngineAdapterBase.h"
#include "conformance/EmptyConfigProvider.h"
#include "conformance/RecordingAdapter.h"
#include "errors/ZANEngineException.h"
#include "events/ZANAppMessageEvent.h"
#include "events/ZANEngineDefs.h"
#include "infra/WrongConfigurationException.h"
#include "support/RecordingListener.h"
#include "support/RunningEngine.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <type_traits>

namespace {

using zan::conformance::EmptyConfigProvider;

using Provider = counted_ptr<IZANEngineConfigProvider>;

counted_ptr<ZANEvent> orderEvent() {
    return counted_ptr<ZANEvent>(new ZANAppMessageEvent("DEMO", nullptr));
}

template <class Action>
std::string wrongConfigurationTold(Action action) {
    try {
        action();
    } catch (WrongConfigurationException const& e) {
        return e.getMessage();
    }
    return "nothing was thrown";
}

TEST(Adapter, CannotBeBuiltWithoutAConfigurationProvider) {
    EXPECT_EQ(wrongConfigurationTold([] { RecordingAdapter adapter{Provider()}; }),
              "Configuration provider cannot be NULL.");
    EXPECT_EQ(wrongConfigurationTold([] {
                  RecordingAdapter adapter{Provider(static_cast<EmptyConfigProvider*>(nullptr))};
              }),
              "Configuration provider cannot be NULL.");
}

TEST(Adapter, SharesItsConfigurationProvider) {
    Provider const provider = emptyConfigProvider();
    {
        RecordingAdapter const adapter(provider);
        EXPECT_EQ(&adapter.getConfigProvider(), provider.get());
        EXPECT_EQ(provider.use_count(), 2u);
    }
    EXPECT_EQ(provider.use_count(), 1u);
}

TEST(Adapter, TakesAnotherConfigurationProvider) {
    Provider const first = emptyConfigProvider();
    Provider const second = emptyConfigProvider();
    RecordingAdapter adapter(first);
    adapter.setConfigProvider(second);
    EXPECT_EQ(&adapter.getConfigProvider(), second.get());
    EXPECT_EQ(first.use_count(), 1u);
}

TEST(Adapter, KeepsItsConfigurationProviderWhenGivenNone) {
    Provider const provider = emptyConfigProvider();
    RecordingAdapter adapter(provider);
    EXPECT_EQ(wrongConfigurationTold([&] { adapter.setConfigProvider(Provider()); }),
              "Configuration provider cannot be NULL.");
    EXPECT_EQ(&adapter.getConfigProvider(), provider.get());
}

TEST(Adapter, ConstructorDoesNotCallAnOverrideOfTheDerivedClass) {
    struct Choosy : RecordingAdapter {
        bool asked = false;
        void setConfigProvider(Provider) override { asked = true; }
    } adapter;
    EXPECT_FALSE(adapter.asked);
    EXPECT_EQ(adapter.getConfigProvider().getProperty("name", "default"), "default");
}

TEST(Adapter, InterfacesCanBeCopied) {
    EXPECT_TRUE(std::is_copy_assignable_v<IZANEngine>);
    EXPECT_TRUE(std::is_copy_assignable_v<IZANEngineAdapter>);
    EXPECT_TRUE(std::is_copy_assignable_v<ZANEngineAdapterBase>);
    EXPECT_TRUE(std::is_copy_constructible_v<EmptyConfigProvider>);
    EXPECT_TRUE(std::is_copy_assignable_v<IZANEngineAdapterFactory>);
    EXPECT_TRUE(std::is_copy_assignable_v<IZANEventListener>);
}

TEST(Adapter, InterfacesHaveVirtualDestructors) {
    EXPECT_TRUE(std::has_virtual_destructor_v<IZANEngine>);
    EXPECT_TRUE(std::has_virtual_destructor_v<IZANEngineAdapterFactory>);
    EXPECT_TRUE(std::has_virtual_destructor_v<IZANEngineConfigProvider>);
    EXPECT_TRUE(std::has_virtual_destructor_v<IZANEventListener>);
}

TEST(Adapter, CannotReportAnEventWithoutTheFacade) {
    RecordingAdapter adapter;
    try {
        adapter.report(orderEvent());
        FAIL() << "nothing was thrown";
    } catch (ZANEngineException const& e) {
        EXPECT_EQ(e.getMessage(), "Proxy was not initialized!");
    }
}

TEST(Adapter, CannotReportAnEventAfterTheFacadeEnded) {
    RecordingAdapter adapter;
    {
        RunningEngine const engine;
        EXPECT_NO_THROW(adapter.report(orderEvent()));
    }
    EXPECT_THROW(adapter.report(orderEvent()), ZANEngineException);
}

TEST(Adapter, ReportedEventReachesTheListeners) {
    RunningEngine engine;
    counted_ptr<IZANEventListener> listener(new RecordingListener);
    engine.proxy().subscribe(UserTicket(), listener, "DEMO", ZANEngineDefs::APP_EVENT_TYPE);
    auto const event = orderEvent();
    engine.adapter().report(event);
    auto const& events = static_cast<RecordingListener&>(*listener).events;
    ASSERT_EQ(events.size(), 1u);
    EXPECT_EQ(events[0], event);
}

TEST(Adapter, GetsTheExceptionOfAListener) {
    RunningEngine engine;
    auto const recording = new RecordingListener;
    recording->onEvent = [](auto const&) { throw std::runtime_error("full"); };
    counted_ptr<IZANEventListener> listener(recording);
    engine.proxy().subscribe(UserTicket(), listener, "DEMO", ZANEngineDefs::APP_EVENT_TYPE);
    EXPECT_THROW(engine.adapter().report(orderEvent()), std::runtime_error);
}

TEST(AdapterBase, AcceptsSubscriptionsAndChangesNothing) {
    RecordingAdapter adapter;
    counted_ptr<IZANEventListener> listener(new RecordingListener);
    counted_ptr<IZANEventListener> none;
    adapter.subscribe(UserTicket(), listener, "DEMO", "no such type");
    adapter.unsubscribe(UserTicket(), listener, "", "");
    adapter.subscribe(UserTicket(), none, "DEMO", "APP");
    EXPECT_EQ(listener.use_count(), 1u);
    EXPECT_FALSE(none);
    EXPECT_TRUE(adapter.calls().empty());
}

TEST(EventListener, IgnoresStateEventsUnlessItSaysOtherwise) {
    struct MessagesOnly : IZANEventListener {
        int events = 0;
        void processEvent(counted_ptr<ZANEvent>) override { ++events; }
    } listener;
    counted_ptr<ZANConnectionStateEvent> const event(new ZANConnectionStateEvent("DEMO", nullptr));
    listener.processStateEvent(event);
    EXPECT_EQ(listener.events, 0);
    EXPECT_EQ(event.use_count(), 1u);
}

} // namespace
