// Adapters of guaranteed listeners, with the listeners that have them.
#include "server/engine/GuaranteedAdapters.h"

#include "guaranteed/ZANGMLAdapter.h"
#include "support/RunningEngine.h"

#include <gtest/gtest.h>

#include <atomic>
#include <optional>
#include <thread>

namespace {

using zan::server::GuaranteedAdapters;
using Listener = ZANGuaranteedEngineMessageListener;

class GuaranteedAdaptersTest : public testing::Test {
protected:
    void SetUp() override { start(); }

    void start() {
        engine.emplace(true);
        engine->adapter().gmlFactory = std::make_unique<GuaranteedAdapters>();
    }

    static Listener made() { return Listener(counted_ptr<IZANEventListener>()); }

    static std::string filterOf(Listener& listener) { return listener.getSubscriptionFilter(); }

    std::size_t const before = GuaranteedAdapters::count();
    std::optional<RunningEngine> engine;
};

TEST_F(GuaranteedAdaptersTest, LiveAsLongAsACopyOfTheirListener) {
    std::optional<Listener> first(made());
    first->setSubscriptionFilter("type = '8'");
    Listener copy(*first);
    first.reset();
    made(); // another one comes and goes
    EXPECT_EQ(filterOf(copy), "type = '8'");
    Listener other = made();
    EXPECT_NE(&copy.getAdapter(), &other.getAdapter());
    EXPECT_EQ(filterOf(other), "");
}

TEST_F(GuaranteedAdaptersTest, SurviveAVectorThatGrows) {
    std::vector<Listener> listeners;
    for (int i = 0; i < 500; ++i) {
        listeners.push_back(made());
        listeners.back().setSubscriptionFilter("id = " + std::to_string(i));
    }
    for (std::size_t i = 0; i < listeners.size(); ++i) {
        ASSERT_EQ(filterOf(listeners[i]), "id = " + std::to_string(i));
    }
    listeners.erase(listeners.begin() + 1, listeners.end() - 1); // assigns
    EXPECT_EQ(filterOf(listeners[0]), "id = 0");
    EXPECT_EQ(filterOf(listeners[1]), "id = 499");
}

TEST_F(GuaranteedAdaptersTest, OfAListenerThatWasAssignedOverEndWithTheFactory) {
    {
        Listener one = made();
        Listener const other = made();
        one = other;
        EXPECT_EQ(GuaranteedAdapters::count(), before + 2);
    }
    engine.reset();
    EXPECT_EQ(GuaranteedAdapters::count(), before);
}

TEST_F(GuaranteedAdaptersTest, AreNoMoreWhenNobodyHasThem) {
    for (int i = 0; i < 1000; ++i) {
        Listener const listener = made();
        Listener const copy(listener);
    }
    EXPECT_LT(GuaranteedAdapters::count(), before + 5);
    engine.reset();
    EXPECT_EQ(GuaranteedAdapters::count(), before);
}

TEST_F(GuaranteedAdaptersTest, AreReturnedToAnyFactoryHoweverOften) {
    Listener stale = made();
    ZANGMLAdapter* const adapter = &stale.getAdapter();
    engine.reset();
    EXPECT_EQ(filterOf(stale), "") << "its engine is gone, it is not";
    start();
    ZANGMLAdapterFactory& factory = ZANEngineProxy::getInstance().getGMLAdapterFactory();
    factory.deleteGMLAdapter(adapter);
    factory.deleteGMLAdapter(adapter);
    { Listener const copy(stale); }
    Listener fresh = made();
    EXPECT_NE(&fresh.getAdapter(), adapter);
    stale.setSubscriptionFilter("type = '8'");
    EXPECT_EQ(filterOf(stale), "type = '8'");
    factory.deleteGMLAdapter(nullptr);
}

// One without a listener may belong to one that is being made on another thread.
TEST_F(GuaranteedAdaptersTest, ThatNoListenerHasYetAreNotTakenAway) {
    ZANGMLAdapterFactory& factory = ZANEngineProxy::getInstance().getGMLAdapterFactory();
    ZANGMLAdapter* const adapter = factory.newGMLAdapter(nullptr);
    factory.deleteGMLAdapter(adapter);
    factory.deleteGMLAdapter(adapter);
    EXPECT_EQ(adapter->getSubscriptionFilter(), "");
}

TEST_F(GuaranteedAdaptersTest, AreSafeWhenListenersAreCopiedOnManyThreads) {
    Listener const original = made();
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int j = 0; j < 2000; ++j) {
                Listener copy(original);
                EXPECT_EQ(filterOf(copy), "");
                Listener own = made();
                own = copy;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    engine.reset();
    EXPECT_EQ(GuaranteedAdapters::count(), before + 1);
}

} // namespace
