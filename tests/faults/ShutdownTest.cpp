#include "faults/FaultFixture.h"

#include "guaranteed/ZANGMLAdapter.h"
#include "guaranteed/ZANGuaranteedEngineMessageListener.h"
#include "infra/WrongConfigurationException.h"
#include "support/CapturedOutput.h"

#include <atomic>
#include <future>
#include <thread>

namespace {

using namespace std::chrono_literals;

/// Ends the engine with the first report that it gets.
class Ender : public IZANEventListener {
public:
    std::atomic<bool> hasEnded{false};
    std::atomic<bool> hasFailed{false};

    void processEvent(counted_ptr<ZANEvent> event) override {
        std::string const type =
            event->getMessage()->getFieldGroup()->getField(35)->getValue().asString();
        if (type == "8" && !isEnding_.exchange(true)) {
            try {
                ZANEngineProxy::uninitialize();
            } catch (std::exception const&) {
                hasFailed = true;
            }
            hasEnded = true;
        }
    }
    void processStateEvent(counted_ptr<ZANConnectionStateEvent>) override {}

private:
    std::atomic<bool> isEnding_{false};
};

class ShutdownTest : public FaultTest {
protected:
    void SetUp() override {
        FaultTest::SetUp();
        startAndConnect();
        ender_ = new Ender;
        recorders_.push_back(counted_ptr<IZANEventListener>(ender_));
    }

    /// After a listener has ended the engine, everything of it is gone, and a new one can be.
    void expectEndedByTheListener() {
        engine().sendMessage(me, "C", order("last"));
        ASSERT_TRUE(eventually([this] { return ender_->hasEnded.load(); }));
        EXPECT_FALSE(ender_->hasFailed);
        EXPECT_FALSE(ZANEngineProxy::isInitialized());
        ASSERT_TRUE(eventually([this] {
            try {
                startEngine();
                return true;
            } catch (WrongConfigurationException const&) {
                return false; // the listener's thread still holds the data folder
            }
        }));
        engine().connect(me, "C");
        EXPECT_TRUE(isConnected());
        EXPECT_EQ(ordersInLog().size(), 1u);
    }

    Ender* ender_ = nullptr;
};

TEST_F(ShutdownTest, MayBeAskedForByADirectListener) {
    engine().subscribeDirect(me, "C", false, true, false, recorders_.back());
    expectEndedByTheListener();
}

TEST_F(ShutdownTest, MayBeAskedForByAGuaranteedListener) {
    counted_ptr<ZANGuaranteedEngineMessageListener> listener(
        new ZANGuaranteedEngineMessageListener(recorders_.back()));
    engine().subscribeDirect(me, "C", false, true, false, listener);
    expectEndedByTheListener();
}

TEST_F(ShutdownTest, MayBeAskedForByAListenerOfTheFacade) {
    engine().subscribe(me, recorders_.back(), "C", ZANEngineDefs::APP_EVENT_TYPE);
    expectEndedByTheListener();
}

TEST_F(ShutdownTest, MayBeAskedForDuringARedelivery) {
    EventRecorder& recorder = record();
    send(20);
    ASSERT_TRUE(recorder.waitFor(isReport, 20));
    counted_ptr<ZANGuaranteedEngineMessageListener> listener(
        new ZANGuaranteedEngineMessageListener(recorders_.front()));
    engine().subscribeDirect(me, "C", false, true, false, listener);
    listener->retrievePotentiallyLostMessages();
    EXPECT_TRUE(eventually([this] { return ender_->hasEnded.load(); }));
    EXPECT_FALSE(ZANEngineProxy::isInitialized());
}

TEST_F(ShutdownTest, MayBeAskedForTwice) {
    ZANEngineProxy::uninitialize();
    ZANEngineProxy::uninitialize();
    EXPECT_FALSE(ZANEngineProxy::isInitialized());
}

TEST_F(ShutdownTest, MayBeAskedForByOneThreadAfterTheOther) {
    std::thread([] { ZANEngineProxy::uninitialize(); }).join();
    std::thread([] { ZANEngineProxy::uninitialize(); }).join();
    EXPECT_FALSE(ZANEngineProxy::isInitialized());
    startEngine();
    engine().connect(me, "C");
    EXPECT_TRUE(isConnected());
}

TEST_F(ShutdownTest, DoesNotWaitForeverForAListener) {
    CapturedOutput const output;
    std::promise<void> release;
    std::shared_future<void> const released = release.get_future().share();
    std::atomic<bool> isHeld{false};
    std::atomic<bool> hasReturned{false};
    record([&, released] {
        if (!isHeld.exchange(true)) {
            released.wait();
            hasReturned = true;
        }
    });
    engine().sendMessage(me, "C", order("held"));
    ASSERT_TRUE(eventually([&] { return isHeld.load(); }));
    auto const before = Clock::now();
    ZANEngineProxy::uninitialize();
    EXPECT_LT(Clock::now() - before, 13s);
    EXPECT_NE(output.text().find("Connection C: a listener does not return; it is left behind\n"),
              std::string::npos)
        << output.text();
    EXPECT_FALSE(hasReturned);
    release.set_value();
    // The engine ends with its last listener, and lets go of the folder.
    EXPECT_TRUE(eventually([this] {
        try {
            startEngine();
            return true;
        } catch (WrongConfigurationException const&) {
            return false;
        }
    }));
    EXPECT_TRUE(hasReturned);
}

} // namespace
