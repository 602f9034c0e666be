// The facade and adapters from modules, which are built with hidden visibility.
#include "engine/ZANEngineProxy.h"

#include "adapter/AbiMark.h"
#include "errors/ZANAdapterCreationException.h"
#include "errors/ZANEngineRemoteException.h"
#include "errors/ZANNotConnectedException.h"
#include "errors/ZANSecurityException.h"
#include "events/ZANAppMessageEvent.h"
#include "infra/WrongConfigurationException.h"
#include "support/RecordingListener.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <stdexcept>
#include <string>

namespace {

class Modules : public testing::Test {
protected:
    void SetUp() override { setenv("ZAN_ADAPTER_PATH", ZAN_TEST_MODULES, 1); }
    void TearDown() override { ZANEngineProxy::uninitialize(); }

    static ZANEngineProxy& start(std::string const& url) {
        ZANEngineProxy::initialize(Url(url));
        return ZANEngineProxy::getInstance();
    }

    static std::string failureOf(std::string const& url) {
        try {
            start(url);
        } catch (WrongConfigurationException const& e) {
            EXPECT_FALSE(ZANEngineProxy::isInitialized());
            return e.getMessage();
        }
        ADD_FAILURE() << url << " started";
        return "";
    }

    UserTicket ticket;
};

TEST_F(Modules, AGoodOneGivesItsAdapterTheUrl) {
    EXPECT_EQ("place", start("good:place").getConnectionProperties(ticket, "A"));
}

TEST_F(Modules, APlainCreationFunctionWithoutAMarkIsEnough) {
    EXPECT_EQ("place", start("plain:place").getConnectionProperties(ticket, "A"));
}

TEST_F(Modules, OneWithoutTheFunctionIsRefused) {
    EXPECT_EQ("Cannot find method \"create_silent_engineadapter\".", failureOf("silent:x"));
}

TEST_F(Modules, AMissingOneIsRefusedWithEveryPlaceThatWasTried) {
    std::string const text = failureOf("absent:x");
    EXPECT_EQ(0u, text.find("Cannot find method \"create_absent_engineadapter\"."));
    EXPECT_NE(std::string::npos, text.find(ZAN_TEST_MODULES "/libabsentengineadapter.so"));
    EXPECT_NE(std::string::npos, text.find(ZAN_TEST_MODULES "/absentengineadapter.so"));
}

TEST_F(Modules, AFunctionThatThrowsALibraryExceptionIsAWrongConfiguration) {
    EXPECT_EQ("the module's own words", failureOf("throwing:x"));
}

TEST_F(Modules, AForeignExceptionPassesUnchanged) {
    EXPECT_THROW(start("throwing:foreign"), std::runtime_error);
    EXPECT_FALSE(ZANEngineProxy::isInitialized());
}

TEST_F(Modules, AFunctionThatReturnsNothingIsToldAsSuch) {
    try {
        start("throwing:empty");
        FAIL();
    } catch (ZANAdapterCreationException const& e) {
        EXPECT_EQ("dll call returned empty adapter", e.getMessage());
    }
    EXPECT_FALSE(ZANEngineProxy::isInitialized());
}

TEST_F(Modules, OneWithAnotherAbiMarkIsRefusedWithBothMarks) {
    std::string const text = failureOf("otherabi:x");
    EXPECT_NE(std::string::npos, text.find("\"ZANEngine ABI 0, wooden counts\"")) << text;
    EXPECT_NE(std::string::npos, text.find("\"" ZAN_ABI_MARK "\"")) << text;
}

TEST_F(Modules, AStartAfterAFailedOneWorks) {
    failureOf("throwing:x");
    EXPECT_EQ("place", start("good:place").getConnectionProperties(ticket, "A"));
}

TEST_F(Modules, SeeTheSameFacadeAsTheProgram) {
    for (char const* url : {"good:x", "second:x"}) {
        auto& proxy = start(url);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(&proxy),
                  static_cast<std::uintptr_t>(proxy.getMillisTime(ticket)))
            << url;
        ZANEngineProxy::uninitialize();
    }
}

TEST_F(Modules, ThrowExceptionsThatTheProgramCatchesByType) {
    auto& proxy = start("good:x");
    EXPECT_THROW(proxy.resetConnection(ticket, "A"), ZANNotConnectedException);
    EXPECT_THROW(proxy.resetConnection(ticket, "A"), ZANEngineRemoteException);
    EXPECT_THROW(proxy.resetConnection(ticket, "A"), InfraException);
    EXPECT_THROW(proxy.resetConnection(ticket, "A"), std::exception);
    EXPECT_THROW(proxy.resetConnection(ticket, "foreign"), std::runtime_error);
}

TEST_F(Modules, CatchExceptionsOfTheProgramByType) {
    auto& proxy = start("good:x");
    counted_ptr<IZANEventListener> listener(new RecordingListener);
    static_cast<RecordingListener&>(*listener).onEvent = [](auto const&) {
        throw ZANSecurityException("no");
    };
    proxy.subscribe(ticket, listener, "A", "APP");
    EXPECT_TRUE(proxy.isConnected(ticket, "A"));
}

TEST_F(Modules, ReportEventsWhoseClassTheProgramSees) {
    auto& proxy = start("good:x");
    counted_ptr<IZANEventListener> listener(new RecordingListener);
    auto& recorded = static_cast<RecordingListener&>(*listener);
    proxy.subscribe(ticket, listener, "A", "APP");
    EXPECT_FALSE(proxy.isConnected(ticket, "A"));
    ASSERT_EQ(1u, recorded.events.size());
    EXPECT_NE(nullptr, dynamic_cast<ZANAppMessageEvent*>(recorded.events.front().get()));
}

} // namespace
