#include "comfort/Subscription.h"

#include "comfort/listen.h"
#include "support/RunningEngine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <stdexcept>
#include <string>

namespace {

bool wasCalled(RecordingAdapter& adapter, std::string const& operation) {
    return std::ranges::any_of(adapter.calls(),
                               [&](std::string const& call) { return call.find(operation) == 0; });
}

TEST(Subscription, LastsAsLongAsTheObject) {
    RunningEngine engine;
    auto const listener = zan::listen([](ZANEvent const&) {});
    {
        zan::Subscription const on(UserTicket(), "BROKER", zan::Events::App | zan::Events::State,
                                   listener);
        EXPECT_TRUE(wasCalled(engine.adapter(), "subscribeDirect"));
        EXPECT_FALSE(wasCalled(engine.adapter(), "destroyDirectSubscriber"));
    }
    EXPECT_TRUE(wasCalled(engine.adapter(), "destroyDirectSubscriber"));
    EXPECT_EQ(listener.use_count(), 1U);
}

TEST(Subscription, LetsTheExceptionOfTheSubscribingPass) {
    RunningEngine engine;
    engine.adapter().onCall = [] { throw std::runtime_error("no"); };
    EXPECT_THROW(zan::Subscription(UserTicket(), "BROKER", zan::Events::All,
                                   zan::listen([](ZANEvent const&) {})),
                 std::runtime_error);
    engine.adapter().onCall = nullptr;
}

TEST(Subscription, MayEndAfterTheEngine) {
    std::optional<RunningEngine> engine(std::in_place);
    zan::Subscription const on(UserTicket(), "BROKER", zan::Events::All,
                               zan::listen([](ZANEvent const&) {}));
    engine.reset();
    EXPECT_FALSE(ZANEngineProxy::isInitialized());
}

TEST(Events, AreJoined) {
    using zan::Events;
    static_assert(includes(Events::App | Events::State, Events::State));
    static_assert(!includes(Events::App | Events::State, Events::Admin));
    static_assert(includes(Events::All, Events::Admin) && includes(Events::All, Events::App));
}

} // namespace
