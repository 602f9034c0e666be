#include "comfort/listen.h"

#include "comfort/MessageBuilder.h"
#include "events/ZANAppMessageEvent.h"
#include "events/ZANEngineDefs.h"
#include "support/RunningEngine.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

UserTicket const me("me", "");

counted_ptr<ZANEvent> appEvent() {
    return make_counted<ZANEvent, ZANAppMessageEvent>("BROKER", zan::MessageBuilder("8").build());
}

counted_ptr<ZANConnectionStateEvent> stateEvent() {
    return make_counted<ZANConnectionStateEvent>(
        "BROKER", make_counted<ZANConnectionState>(FLAG_LINK_ACTIVE));
}

TEST(Listen, CallsAFunctionForEachMessageEventOfTheFacade) {
    RunningEngine engine;
    std::vector<std::string> seen;
    auto listener =
        zan::listen([&](ZANEvent const& event) { seen.push_back(event.getConnectionName()); });
    engine.proxy().subscribe(me, listener, "BROKER", ZANEngineDefs::APP_EVENT_TYPE);
    engine.adapter().report(appEvent());
    engine.adapter().report(appEvent());
    engine.proxy().unsubscribe(me, listener, "BROKER", ZANEngineDefs::APP_EVENT_TYPE);
    engine.adapter().report(appEvent());
    EXPECT_EQ(seen, (std::vector<std::string>{"BROKER", "BROKER"}));
}

TEST(Listen, HandsTheEventOverToAFunctionThatKeepsIt) {
    std::vector<counted_ptr<ZANEvent>> kept;
    auto const listener =
        zan::listen([&](counted_ptr<ZANEvent> event) { kept.push_back(std::move(event)); });
    counted_ptr<ZANEvent> event = appEvent();
    listener->processEvent(event);
    ASSERT_EQ(kept.size(), 1U);
    EXPECT_EQ(kept[0], event);
    EXPECT_EQ(event.use_count(), 2U);
}

TEST(Listen, CallsAFunctionForStateEvents) {
    long flags = 0;
    auto const listener = zan::listen(
        [&](ZANConnectionStateEvent& event) { flags = event.getConnectionState()->getState(); });
    listener->processStateEvent(stateEvent());
    EXPECT_EQ(flags, FLAG_LINK_ACTIVE);
    EXPECT_NO_THROW(listener->processEvent(appEvent()));
}

TEST(Listen, TakesOneFunctionForEachKind) {
    std::string seen;
    auto const listener =
        zan::listen([&](ZANEvent const&) { seen += "message "; },
                    [&](counted_ptr<ZANConnectionStateEvent> const&) { seen += "state "; });
    listener->processStateEvent(stateEvent());
    listener->processEvent(appEvent());
    EXPECT_EQ(seen, "state message ");
}

TEST(Listen, PassesStateEventsOverWithoutAFunctionForThem) {
    auto const listener = zan::listen([](ZANEvent const&) { FAIL() << "no message came"; });
    listener->processStateEvent(stateEvent());
}

TEST(Listen, LetsTheFunctionsExceptionPass) {
    RunningEngine engine;
    int later = 0;
    auto failing = zan::listen([](ZANEvent const&) { throw std::runtime_error("no"); });
    auto second = zan::listen([&](ZANEvent const&) { ++later; });
    engine.proxy().subscribe(me, failing, "BROKER", ZANEngineDefs::APP_EVENT_TYPE);
    engine.proxy().subscribe(me, second, "BROKER", ZANEngineDefs::APP_EVENT_TYPE);
    EXPECT_THROW(engine.adapter().report(appEvent()), std::runtime_error);
    EXPECT_EQ(later, 0);
}

TEST(Listen, KeepsTheFunctionAsLongAsTheListener) {
    auto const owned = std::make_shared<int>(0);
    auto listener = zan::listen([owned](ZANEvent const&) { ++*owned; });
    EXPECT_EQ(owned.use_count(), 2);
    listener->processEvent(appEvent());
    EXPECT_EQ(*owned, 1);
    listener.reset();
    EXPECT_EQ(owned.use_count(), 1);
}

TEST(Listen, TakesAFunctionThatCannotBeCopied) {
    auto counter = std::make_unique<int>(0);
    int& count = *counter;
    auto const listener =
        zan::listen([counter = std::move(counter)](ZANEvent const&) mutable { ++*counter; });
    listener->processEvent(appEvent());
    EXPECT_EQ(count, 1);
}

} // namespace
