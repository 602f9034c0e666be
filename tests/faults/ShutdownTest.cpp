#include "faults/FaultFixture.h"

#include "guaranteed/ZANGMLAdapter.h"
#include "guaranteed/ZANGuaranteedEngineMessageListener.h"
#include "infra/WrongConfigurationException.h"
#include "support/CapturedOutput.h"
#include "support/Ender.h"

#include <atomic>
#include <future>
#include <thread>

namespace {

using namespace std::chrono_literals;

class ShutdownTest : public FaultTest {
protected:
    void SetUp() override {
        FaultTest::SetUp();
        startAndConnect();
        ender_ = counted_ptr<IZANEventListener>(new Ender(ending_));
    }

    /// After a listener has ended the engine, everything of it is gone, and a new one can be.
    void expectEndedByTheListener(std::size_t ordersSent) {
        ASSERT_TRUE(eventually([this] { return ending_->isGone.load(); }));
        EXPECT_TRUE(ending_->hasEnded);
        EXPECT_FALSE(ending_->hasFailed);
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
        EXPECT_EQ(ordersInLog().size(), ordersSent);
    }

    void expectEndedByTheNextMessage() {
        engine().sendMessage(me, "C", order("last"));
        expectEndedByTheListener(1);
    }

    std::shared_ptr<Ending> const ending_ = std::make_shared<Ending>();
    counted_ptr<IZANEventListener> ender_;
};

TEST_F(ShutdownTest, MayBeAskedForByADirectListener) {
    engine().subscribeDirect(me, "C", false, true, false, ender_);
    ender_.reset();
    expectEndedByTheNextMessage();
}

TEST_F(ShutdownTest, MayBeAskedForByAGuaranteedListener) {
    counted_ptr<ZANGuaranteedEngineMessageListener> listener(
        new ZANGuaranteedEngineMessageListener(ender_));
    engine().subscribeDirect(me, "C", false, true, false, listener);
    listener.reset();
    ender_.reset();
    expectEndedByTheNextMessage();
}

TEST_F(ShutdownTest, MayBeAskedForByAListenerOfTheFacade) {
    engine().subscribe(me, ender_, "C", ZANEngineDefs::APP_EVENT_TYPE);
    ender_.reset();
    expectEndedByTheNextMessage();
}

TEST_F(ShutdownTest, MayBeAskedForDuringARedelivery) {
    EventRecorder& recorder = record();
    send(20);
    ASSERT_TRUE(recorder.waitFor(isReport, 20));
    counted_ptr<ZANGuaranteedEngineMessageListener> listener(
        new ZANGuaranteedEngineMessageListener(ender_));
    ender_.reset();
    engine().subscribeDirect(me, "C", false, true, false, listener);
    EXPECT_EQ(failureOf<ZANEngineException>([&] { listener->retrievePotentiallyLostMessages(); }),
              "the engine stopped before everything was delivered");
    // The engine has let go of it, so this is the last handle.
    EXPECT_FALSE(ending_->isGone);
    listener.reset();
    EXPECT_TRUE(ending_->isGone);
    expectEndedByTheListener(20);
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
