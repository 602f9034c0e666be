#include "comfort/listenGuaranteed.h"

#include "comfort/MessageBuilder.h"
#include "events/ZANAppMessageEvent.h"
#include "support/RecordingGML.h"
#include "support/RunningEngine.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using Calls = std::vector<std::string>;

class ListenGuaranteed : public testing::Test {
protected:
    ListenGuaranteed() {
        auto factory = std::make_unique<RecordingGMLFactory>();
        factory_ = factory.get();
        engine_.adapter().gmlFactory = std::move(factory);
    }

    Calls const& calls() const { return factory_->adapter.calls; }

    // As the embedded engine delivers the seventh message, an application message that came in.
    static counted_ptr<ZANEvent> seventh() {
        return make_counted<ZANEvent, ZANAppMessageEvent>(
            "BROKER", zan::MessageBuilder("8").set(16580, 7).set(16581, 2).build());
    }

    RunningEngine engine_;
    RecordingGMLFactory* factory_ = nullptr;
};

TEST_F(ListenGuaranteed, MarksAMessageWhenTheFunctionHasReturned) {
    std::string seen;
    auto const listener = zan::listenGuaranteed([&](ZANEvent const& event) {
        EXPECT_EQ(calls(), Calls());
        seen = event.getConnectionName();
    });
    listener->processEvent(seventh());
    EXPECT_EQ(seen, "BROKER");
    EXPECT_EQ(calls(), Calls{callText("setLastConsumedMessage", std::string("BROKER"), 7, 2)});
}

TEST_F(ListenGuaranteed, MarksEachMessageInItsStream) {
    auto const listener = zan::listenGuaranteed([](ZANEvent const&) {});
    for (int const stream : {3, 0}) {
        listener->processEvent(make_counted<ZANEvent, ZANAppMessageEvent>(
            "BROKER", zan::MessageBuilder("8").set(16580, 7).set(16581, stream).build()));
    }
    std::string const name = "BROKER";
    EXPECT_EQ(calls(), (Calls{callText("setLastConsumedMessage", name, 7, 3),
                              callText("setLastConsumedMessage", name, 7, 0)}));
}

TEST_F(ListenGuaranteed, TellsOfAMessageThatCannotBeMarked) {
    auto const listener = zan::listenGuaranteed([](ZANEvent const&) {});
    EXPECT_THROW(listener->processEvent(make_counted<ZANEvent, ZANAppMessageEvent>(
                     "BROKER", zan::MessageBuilder("8").build())),
                 InfraException);
    EXPECT_EQ(calls(), Calls());
}

TEST_F(ListenGuaranteed, MarksNoMessageOnWhichTheFunctionFails) {
    auto const listener =
        zan::listenGuaranteed([](ZANEvent const&) { throw std::runtime_error("no"); });
    EXPECT_THROW(listener->processEvent(seventh()), std::runtime_error);
    EXPECT_EQ(calls(), Calls());
}

TEST_F(ListenGuaranteed, PassesStateEventsOver) {
    auto const listener = zan::listenGuaranteed([](ZANEvent const&) { FAIL(); });
    listener->processStateEvent(make_counted<ZANConnectionStateEvent>(
        "BROKER", make_counted<ZANConnectionState>(FLAG_LINK_ACTIVE)));
    EXPECT_EQ(calls(), Calls());
}

TEST_F(ListenGuaranteed, IsTheListenerThatAsksForItsAdapter) {
    auto listener = zan::listenGuaranteed([](counted_ptr<ZANEvent> const&) {});
    EXPECT_EQ(factory_->listeners,
              std::vector<ZANGuaranteedEngineMessageListener*>{listener.get()});
    listener.reset();
    EXPECT_EQ(factory_->returned, std::vector<ZANGMLAdapter*>{&factory_->adapter});
}

} // namespace
