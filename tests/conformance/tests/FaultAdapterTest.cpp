// The fault adapter in front of a recording one: what it forwards, and what goes wrong on the way.
#include "conformance/FaultAdapter.h"

#include "conformance/EmptyConfigProvider.h"
#include "conformance/EventRecorder.h"
#include "conformance/RecordingAdapter.h"
#include "engine/ZANEngineProxy.h"
#include "errors/ZANConnectionUnknownException.h"
#include "errors/ZANNotConnectedException.h"
#include "events/ZANAppMessageEvent.h"
#include "events/ZANEngineDefs.h"
#include "infra/WrongConfigurationException.h"
#include "support/TestFactory.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

using namespace zan::conformance;

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

class FaultAdapterTest : public testing::Test {
protected:
    void TearDown() override { ZANEngineProxy::uninitialize(); }

    void start(std::string const& script) {
        inner_ = new RecordingAdapter;
        inner_->connectionNames = {"A", "B"};
        inner_->number = 7;
        inner_->threadSafe = true;
        counted_ptr<IZANEngineAdapter> const adapter(
            new FaultAdapter(emptyConfigProvider(), counted_ptr<IZANEngineAdapter>(inner_),
                             FaultScript(script, "script")));
        ZANEngineProxy::initialize(emptyConfigProvider(),
                                   counted_ptr<IZANEngineAdapterFactory>(new TestFactory(adapter)));
        engine().isConnected(me_, "fault.A");
        inner_->forgetCalls();
    }

    static ZANEngineProxy& engine() { return ZANEngineProxy::getInstance(); }

    EventRecorder& listen() {
        auto* const recorder = new EventRecorder;
        listener_ = counted_ptr<IZANEventListener>(recorder);
        engine().subscribe(me_, listener_, "fault.A", ZANEngineDefs::APP_EVENT_TYPE);
        return *recorder;
    }

    /// Events 1 to `count` of the inner adapter.
    void report(int count) {
        for (int i = 1; i <= count; ++i) {
            counted_ptr<ZANFieldGroup> const body(new ZANFieldGroup(std::string("D")));
            body->setFieldValue(16580, i);
            body->setFieldValue(16577, 0.0);
            inner_->report(counted_ptr<ZANEvent>(
                new ZANAppMessageEvent("A", counted_ptr<ZANMessage>(new ZANMessage(body)))));
        }
    }

    static std::vector<int> idsOf(EventRecorder& recorder) {
        std::vector<int> ids;
        for (SeenEvent const& each : recorder.events()) {
            EXPECT_EQ(each.connection, "fault.A");
            ids.push_back(each.id);
        }
        return ids;
    }

    std::vector<std::string> calls() { return inner_->calls(); }

    UserTicket const me_{"tester", ""};
    RecordingAdapter* inner_ = nullptr;
    counted_ptr<IZANEventListener> listener_;
};

TEST_F(FaultAdapterTest, ForwardsUnderTheInnerName) {
    start("");
    EXPECT_EQ(engine().sendMessage(me_, "fault.A", "35=D"), 7);
    EXPECT_EQ(calls(), std::vector<std::string>{callText("sendMessage", me_, "A", "35=D")});
}

TEST_F(FaultAdapterTest, ShowsTheNamesWithItsPrefix) {
    start("");
    std::vector<std::string> names{"before"};
    engine().getConnectionNameList(me_, names);
    EXPECT_EQ(names, (std::vector<std::string>{"before", "fault.A", "fault.B"}));
    EXPECT_THROW(engine().isConnected(me_, "A"), ZANConnectionUnknownException);
}

TEST_F(FaultAdapterTest, ReturnsTheCallersOwnVector) {
    start("drop retrieveMessagesByIdRange 2");
    FaultAdapter::Messages found;
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(&engine().retrieveMessagesByIdRange(me_, "fault.A", found, 0, 1, 2, "", false),
                  &found);
    }
    EXPECT_EQ(calls().size(), 1u);
}

TEST_F(FaultAdapterTest, ThrowsForTheCallThatTheScriptNames) {
    start("throw sendMessage 2 ZANNotConnectedException the line is down\n");
    EXPECT_EQ(engine().sendMessage(me_, "fault.A", "35=D"), 7);
    try {
        engine().sendMessage(me_, "fault.A", "35=D");
        FAIL() << "nothing was thrown";
    } catch (ZANNotConnectedException const& e) {
        EXPECT_EQ(e.getMessage(),
                  "kestrow.moravane.engine.ZANNotConnectedException: the line is down");
    }
    EXPECT_EQ(engine().sendMessage(me_, "fault.A", "35=D"), 7);
    EXPECT_EQ(calls().size(), 2u);
}

TEST_F(FaultAdapterTest, DropsCalls) {
    start("drop sendMessage 1\n");
    EXPECT_EQ(engine().sendMessage(me_, "fault.A", "35=D"), 0);
    EXPECT_TRUE(calls().empty());
}

TEST_F(FaultAdapterTest, DelaysEveryCall) {
    start("# slow\ndelay sendMessage * 20ms\n");
    auto const before = Clock::now();
    engine().sendMessage(me_, "fault.A", "35=D");
    engine().sendMessage(me_, "fault.A", "35=D");
    EXPECT_GE(Clock::now() - before, 40ms);
}

TEST_F(FaultAdapterTest, ReordersCallsOfTwoThreads) {
    start("reorder sendMessage 1 2\n");
    std::thread first([&] { engine().sendMessage(me_, "fault.A", "35=D|11=first"); });
    // The first call has to be in; that it waits cannot be seen.
    std::this_thread::sleep_for(100ms);
    engine().sendMessage(me_, "fault.A", "35=D|11=second");
    first.join();
    EXPECT_EQ(calls(),
              (std::vector<std::string>{callText("sendMessage", me_, "A", "35=D|11=second"),
                                        callText("sendMessage", me_, "A", "35=D|11=first")}));
}

TEST_F(FaultAdapterTest, PassesEventsOnUnderItsNames) {
    start("");
    EventRecorder& recorder = listen();
    report(2);
    EXPECT_EQ(idsOf(recorder), (std::vector<int>{1, 2}));
}

TEST_F(FaultAdapterTest, DropsAndReordersEvents) {
    start("drop event 1\nreorder event 2 4\n");
    EventRecorder& recorder = listen();
    report(5);
    EXPECT_EQ(idsOf(recorder), (std::vector<int>{3, 4, 2, 5}));
}

TEST_F(FaultAdapterTest, DelaysEvents) {
    start("delay event * 20ms\n");
    EventRecorder& recorder = listen();
    auto const before = Clock::now();
    report(2);
    EXPECT_GE(Clock::now() - before, 40ms);
    EXPECT_EQ(idsOf(recorder).size(), 2u);
}

TEST_F(FaultAdapterTest, FailsTheStart) {
    EXPECT_THROW(start("throw initialize 1 ZANCannotConnectException no engine"),
                 ZANEngineException);
    EXPECT_FALSE(ZANEngineProxy::isInitialized());
}

struct BadLine {
    char const* line;
    char const* reason;
};

class FaultScriptTest : public testing::TestWithParam<BadLine> {};

TEST_P(FaultScriptTest, IsRefusedWithLineAndReason) {
    try {
        FaultScript(std::string("drop event 1\n") + GetParam().line, "script");
        FAIL() << "nothing was thrown";
    } catch (WrongConfigurationException const& e) {
        EXPECT_EQ(e.getMessage().find("script:2: "), 0u) << e.getMessage();
        EXPECT_NE(e.getMessage().find(GetParam().reason), std::string::npos) << e.getMessage();
    }
}

INSTANTIATE_TEST_SUITE_P(
    Lines, FaultScriptTest,
    testing::Values(BadLine{"lose event 1", "\"lose\" is no fault"},
                    BadLine{"drop event x", "\"x\" is no number"},
                    BadLine{"delay event 1 20", "20ms would be right"},
                    BadLine{"throw connect 1 NoException text", "\"NoException\" cannot be thrown"},
                    BadLine{"throw event 1 ZANEngineException x", "an event cannot throw"},
                    BadLine{"reorder event 3 2", "reorder event 2 3 would be right"}));

} // namespace
