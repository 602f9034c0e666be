#include "engine/ZANEngineProxy.h"

#include "conformance/EmptyConfigProvider.h"
#include "conformance/RecordingAdapter.h"
#include "errors/ZANAdapterCreationException.h"
#include "errors/ZANConnectionUnavailableException.h"
#include "events/ZANAppMessageEvent.h"
#include "infra/ValuePresentation.h"
#include "infra/WrongConfigurationException.h"
#include "support/RecordingListener.h"
#include "support/RunningEngine.h"
#include "support/TestFactory.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using Calls = std::vector<std::string>;

struct Factory {
    counted_ptr<IZANEngineAdapterFactory> pointer{
        new TestFactory(counted_ptr<IZANEngineAdapter>(new RecordingAdapter))};
    TestFactory& factory = static_cast<TestFactory&>(*pointer);

    RecordingAdapter& adapter() { return static_cast<RecordingAdapter&>(*factory.adapter); }
    void initialize() { ZANEngineProxy::initialize(emptyConfigProvider(), pointer); }
};

void expectNotInitialized() {
    EXPECT_FALSE(ZANEngineProxy::isInitialized());
    try {
        ZANEngineProxy::getInstance();
        FAIL();
    } catch (ZANEngineException const& e) {
        EXPECT_EQ("Proxy was not initialized!", e.getMessage());
    }
}

TEST(ProxyLifecycle, IsUninitializedAtFirst) {
    expectNotInitialized();
    ZANEngineProxy::uninitialize();
    expectNotInitialized();
}

TEST(ProxyLifecycle, AsksTheFactoryWithTheGivenProvider) {
    Factory factory;
    auto const provider = emptyConfigProvider();
    ZANEngineProxy::initialize(provider, factory.pointer);
    EXPECT_TRUE(ZANEngineProxy::isInitialized());
    EXPECT_EQ(1, factory.factory.timesAsked);
    EXPECT_EQ(provider, factory.factory.provider);
    ZANEngineProxy::uninitialize();
}

TEST(ProxyLifecycle, AsksForThreadSafetyOnceAndThenStartsTheAdapter) {
    Factory factory;
    factory.initialize();
    EXPECT_EQ(Calls({"isThreadSafe()", "initialize()"}), factory.adapter().calls());
    factory.adapter().forgetCalls();
    ZANEngineProxy::uninitialize();
    EXPECT_EQ(Calls({"uninitialize()"}), factory.adapter().calls());
    expectNotInitialized();
}

TEST(ProxyLifecycle, IsPublishedOnlyAfterTheAdapterHasStarted) {
    Factory factory;
    bool published = true;
    factory.adapter().onCall = [&] { published = ZANEngineProxy::isInitialized(); };
    factory.initialize();
    EXPECT_FALSE(published);
    factory.adapter().onCall = nullptr;
    ZANEngineProxy::uninitialize();
}

TEST(ProxyLifecycle, ASecondInitializeKeepsTheFirstAdapter) {
    Factory first;
    first.initialize();
    auto* const proxy = &ZANEngineProxy::getInstance();
    Factory second;
    second.initialize();
    ZANEngineProxy::initialize(Url("nosuchprotocol:x"));
    EXPECT_EQ(0, second.factory.timesAsked);
    EXPECT_EQ(proxy, &ZANEngineProxy::getInstance());
    ZANEngineProxy::uninitialize();
}

TEST(ProxyLifecycle, RefusesAnEmptyAdapter) {
    Factory factory;
    factory.factory.adapter = nullptr;
    try {
        factory.initialize();
        FAIL();
    } catch (ZANAdapterCreationException const& e) {
        EXPECT_EQ("Factory created empty adapter", e.getMessage());
    }
    expectNotInitialized();
}

TEST(ProxyLifecycle, RefusesAMissingFactory) {
    EXPECT_THROW(ZANEngineProxy::initialize(emptyConfigProvider(), nullptr),
                 WrongConfigurationException);
    expectNotInitialized();
}

TEST(ProxyLifecycle, PassesOnWhatTheFactoryThrows) {
    Factory factory;
    factory.factory.onCreate = [] { throw ZANConnectionUnavailableException("no engine"); };
    EXPECT_THROW(factory.initialize(), ZANConnectionUnavailableException);
    expectNotInitialized();
    factory.factory.onCreate = [] { throw 5; };
    EXPECT_THROW(factory.initialize(), int);
    expectNotInitialized();
}

TEST(ProxyLifecycle, PassesOnWhatTheStartThrowsAndLetsGoOfTheAdapter) {
    Factory factory;
    factory.adapter().throwFromCalls(ZANConnectionUnavailableException("cannot start"));
    EXPECT_THROW(factory.initialize(), ZANConnectionUnavailableException);
    expectNotInitialized();
    EXPECT_EQ(1u, factory.factory.adapter.use_count());
}

TEST(ProxyLifecycle, AStopThatThrowsLeavesTheProxy) {
    Factory factory;
    factory.initialize();
    factory.adapter().throwFromCalls(ZANConnectionUnavailableException("cannot stop"));
    EXPECT_THROW(ZANEngineProxy::uninitialize(), ZANConnectionUnavailableException);
    EXPECT_TRUE(ZANEngineProxy::isInitialized());
    factory.adapter().onCall = nullptr;
    ZANEngineProxy::uninitialize();
    expectNotInitialized();
}

TEST(ProxyLifecycle, TellsWhenTheAdaptersStopHasTornTheProxyDown) {
    Factory factory;
    factory.initialize();
    bool inner = false;
    factory.adapter().onCall = [&] {
        if (!inner) {
            inner = true;
            ZANEngineProxy::uninitialize();
        }
    };
    try {
        ZANEngineProxy::uninitialize();
        FAIL();
    } catch (ZANEngineException const& e) {
        EXPECT_EQ("Proxy was not initialized!", e.getMessage());
    }
    expectNotInitialized();
}

TEST(ProxyLifecycle, ReleasesTheAdapterWhenItEnds) {
    Factory factory;
    factory.initialize();
    EXPECT_EQ(2u, factory.factory.adapter.use_count());
    ZANEngineProxy::uninitialize();
    EXPECT_EQ(1u, factory.factory.adapter.use_count());
}

TEST(ProxyLifecycle, SubscriptionsEndWithTheProxy) {
    UserTicket const ticket;
    counted_ptr<IZANEventListener> listener(new RecordingListener);
    {
        RunningEngine engine;
        for (char const* type : {"APP", "ADMIN", "STATE"}) {
            engine.proxy().subscribe(ticket, listener, "A", type);
        }
        EXPECT_EQ(4u, listener.use_count());
    }
    EXPECT_EQ(1u, listener.use_count());
    RunningEngine again;
    again.adapter().report(counted_ptr<ZANEvent>(new ZANAppMessageEvent("A", nullptr)));
    EXPECT_TRUE(static_cast<RecordingListener&>(*listener).events.empty());
}

TEST(ProxyLifecycle, InstallsAValuePresentationUnlessThereIsOne) {
    {
        RunningEngine const engine;
        EXPECT_NE(nullptr, dynamic_cast<ValueDefaultPresentation*>(ValuePresentation::Instance_));
    }
    EXPECT_EQ(nullptr, ValuePresentation::Instance_);
    auto* const own = new ValueDefaultPresentation;
    TSingleton<ValuePresentation>::initialize(own);
    {
        RunningEngine const engine;
        EXPECT_EQ(own, ValuePresentation::Instance_);
    }
    EXPECT_EQ(nullptr, ValuePresentation::Instance_);
}

TEST(ProxyLifecycle, CanBeRepeatedAThousandTimes) {
    UserTicket const ticket;
    counted_ptr<IZANEventListener> listener(new RecordingListener);
    for (int i = 0; i < 1000; ++i) {
        RunningEngine engine(i % 2 == 0);
        engine.proxy().subscribe(ticket, listener, "A", "APP");
        engine.adapter().report(counted_ptr<ZANEvent>(new ZANAppMessageEvent("A", nullptr)));
    }
    EXPECT_EQ(1000u, static_cast<RecordingListener&>(*listener).events.size());
    EXPECT_EQ(1u, listener.use_count());
}

} // namespace
