#include "comfort/EngineScope.h"

#include "conformance/EmptyConfigProvider.h"
#include "conformance/RecordingAdapter.h"
#include "support/TestFactory.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace {

using zan::conformance::emptyConfigProvider;
using zan::conformance::RecordingAdapter;

struct Adapter {
    counted_ptr<IZANEngineAdapter> held{new RecordingAdapter};
    counted_ptr<IZANEngineAdapterFactory> factory{new TestFactory(held)};

    RecordingAdapter& operator*() { return static_cast<RecordingAdapter&>(*held); }
};

TEST(EngineScope, KeepsTheEngineAsLongAsItLives) {
    Adapter adapter;
    {
        zan::EngineScope const engine(emptyConfigProvider(), adapter.factory);
        EXPECT_EQ(&*engine, &ZANEngineProxy::getInstance());
        engine->connect(UserTicket(), "BROKER");
    }
    EXPECT_FALSE(ZANEngineProxy::isInitialized());
}

TEST(EngineScope, EndsTheEngineWhenTheScopeIsLeftByAnException) {
    Adapter adapter;
    try {
        zan::EngineScope const engine(emptyConfigProvider(), adapter.factory);
        throw std::runtime_error("in the middle");
    } catch (std::runtime_error const&) {
        EXPECT_FALSE(ZANEngineProxy::isInitialized());
    }
}

TEST(EngineScope, RefusesToStartASecondEngine) {
    Adapter adapter;
    zan::EngineScope const engine(emptyConfigProvider(), adapter.factory);
    EXPECT_THROW(zan::EngineScope(Url("unknown:")), ZANEngineException);
    EXPECT_TRUE(ZANEngineProxy::isInitialized());
}

TEST(EngineScope, LetsTheExceptionOfTheStartPass) {
    EXPECT_THROW(zan::EngineScope(Url("nowhere:")), InfraException);
    EXPECT_FALSE(ZANEngineProxy::isInitialized());
}

TEST(EngineScope, TellsTheDiagnosticsWhenTheEngineDoesNotEnd) {
    std::string told;
    setDiagnosticSink([&](DiagnosticLevel, std::string const& about, std::string const& text) {
        told += about + ": " + text;
    });
    Adapter adapter;
    {
        zan::EngineScope const engine(emptyConfigProvider(), adapter.factory);
        (*adapter).onCall = [] { throw std::runtime_error("stuck"); };
    }
    (*adapter).onCall = nullptr;
    ZANEngineProxy::uninitialize();
    setDiagnosticSink(nullptr);
    EXPECT_EQ(told, "engine: did not end: stuck");
}

TEST(EngineScope, FindsNothingToEndWhenTheApplicationHasEndedIt) {
    Adapter adapter;
    zan::EngineScope const engine(emptyConfigProvider(), adapter.factory);
    ZANEngineProxy::uninitialize();
    EXPECT_THROW(static_cast<void>(*engine), ZANEngineException);
}

} // namespace
