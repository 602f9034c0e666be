#include "faults/PeakMemory.h"
#include "faults/TwoConnections.h"

#include "errors/ZANConnectionUnavailableException.h"
#include "support/CapturedOutput.h"
#include "support/Hold.h"

#include <atomic>
#include <iostream>
#include <stdexcept>
#include <thread>

namespace {

using namespace std::chrono_literals;

// A sanitizer takes its time, and cannot tell the memory anyway.
constexpr int floodSize = PeakMemory::canTell() ? 200000 : 20000;
// What may wait for a counterparty and for listeners, and what the log keeps at hand.
constexpr long mostMegabytes = 100;

/// Takes its time with some of the events, and counts the rest.
class SlowListener : public IZANEventListener {
public:
    explicit SlowListener(int napEvery) : napEvery_(napEvery) {}

    std::atomic<int> seen{0};

    void processEvent(counted_ptr<ZANEvent>) override {
        if (++seen % napEvery_ == 0) {
            std::this_thread::sleep_for(10ms);
        }
    }
    void processStateEvent(counted_ptr<ZANConnectionStateEvent>) override {}

private:
    int const napEvery_;
};

class BackPressureTest : public TwoConnectionsTest {
protected:
    SlowListener& listenSlowly(int napEvery) {
        auto* const listener = new SlowListener(napEvery);
        recorders_.push_back(counted_ptr<IZANEventListener>(listener));
        engine().subscribeDirect(me, "C", false, true, false, recorders_.back());
        return *listener;
    }

    /// Sends orders at `C` from four threads.
    void flood(int count) {
        std::atomic<int> left{count};
        std::vector<std::thread> senders;
        for (int sender = 0; sender < 4; ++sender) {
            senders.emplace_back([&] {
                for (int number; (number = left--) > 0;) {
                    engine().sendMessage(me, "C", order("F-" + std::to_string(number)));
                }
            });
        }
        for (std::thread& sender : senders) {
            sender.join();
        }
    }
};

TEST_F(BackPressureTest, OfABlockedPeerDoesNotReachAnotherConnection) {
    startBoth({"--no-answers"});
    connectBoth();
    acceptor_->sendSignal(SIGSTOP);
    std::atomic<int> sent{0};
    std::atomic<bool> isEnough{false};
    std::thread flooding([&] {
        while (!isEnough) {
            engine().sendMessage(me, "C", order("B-" + std::to_string(sent)));
            ++sent;
        }
    });
    // Until nothing goes any more.
    for (int before = -1; before != sent;) {
        before = sent;
        std::this_thread::sleep_for(300ms);
    }
    auto const times = timesOfTalkingAtD(2000);
    std::cout << "beside a blocked peer: median " << times[1000].count() << " us, 99 % "
              << times[1980].count() << " us, longest " << times.back().count() << " us\n";
    EXPECT_LT(times[1000], 5ms);
    EXPECT_LT(times[1980], 50ms);
    EXPECT_LT(times.back(), 1s);
    isEnough = true;
    acceptor_->sendSignal(SIGCONT);
    flooding.join();
    EXPECT_TRUE(engine().pingConnection(me, "C", 10000));
    EXPECT_EQ(ordersInJournal(), static_cast<std::size_t>(sent));
}

TEST_F(BackPressureTest, OfABlockedPeerEndsASendInTimeAndStoresNothing) {
    startBoth({"--no-answers"});
    connectBoth();
    acceptor_->sendSignal(SIGSTOP);
    std::atomic<int> sent{0};
    auto last = Clock::now();
    PeakMemory const memory;
    std::string const failure = failureOf<ZANConnectionUnavailableException>([&] {
        for (;; ++sent) {
            last = Clock::now();
            engine().sendMessage(me, "C", order("B-" + std::to_string(sent)));
        }
    });
    EXPECT_NE(failure.find("connection C: "), std::string::npos) << failure;
    EXPECT_LT(Clock::now() - last, 13s);
    EXPECT_NE(engine().getConnectionState(me, "C")->getState() & FLAG_UNAVAILABLE, 0);
    EXPECT_EQ(engine().getMessageIds(me, "C", 3, false).size(), static_cast<std::size_t>(sent));
    if (PeakMemory::canTell()) {
        EXPECT_LT(memory.growthInMegabytes(), mostMegabytes);
    }
    acceptor_->sendSignal(SIGCONT);
    ASSERT_TRUE(eventually([] { return engine().pingConnection(me, "C", 5000); }));
    EXPECT_EQ(ordersInJournal(), static_cast<std::size_t>(sent));
    engine().sendMessage(me, "C", order("again"));
    EXPECT_EQ(engine().getConnectionState(me, "C")->getState() & FLAG_UNAVAILABLE, 0);
}

TEST_F(BackPressureTest, OfAPeerThatReadsInFitsKeepsMemoryBounded) {
    startBoth({"--no-answers"});
    connectBoth();
    std::atomic<bool> isEnough{false};
    std::thread fits([&] {
        while (!isEnough) {
            acceptor_->sendSignal(SIGSTOP);
            std::this_thread::sleep_for(30ms);
            acceptor_->sendSignal(SIGCONT);
            std::this_thread::sleep_for(100ms);
        }
    });
    PeakMemory const memory;
    flood(floodSize);
    isEnough = true;
    fits.join();
    std::cout << "against a peer that reads in fits: " << memory.growthInMegabytes() << " MB\n";
    if (PeakMemory::canTell()) {
        EXPECT_LT(memory.growthInMegabytes(), mostMegabytes);
    }
    ASSERT_TRUE(engine().pingConnection(me, "C", 60000));
    EXPECT_EQ(ordersInJournal(), static_cast<std::size_t>(floodSize));
}

TEST_F(BackPressureTest, OfASlowListenerKeepsMemoryBoundedWhileWeSend) {
    startBoth({"--no-answers"});
    connectBoth();
    SlowListener& listener = listenSlowly(500);
    PeakMemory const memory;
    flood(floodSize);
    std::cout << "against a slow listener, sending: " << memory.growthInMegabytes() << " MB\n";
    if (PeakMemory::canTell()) {
        EXPECT_LT(memory.growthInMegabytes(), mostMegabytes);
    }
    EXPECT_TRUE(eventually([&] { return listener.seen == floodSize; }));
}

TEST_F(BackPressureTest, OfASlowListenerKeepsMemoryBoundedWhileTheySend) {
    startBoth({"--report-every", "1", "--burst", "1000", "--most", std::to_string(floodSize)});
    SlowListener& listener = listenSlowly(500);
    PeakMemory const memory;
    connectBoth();
    for (int patience = 0; patience < 6 && listener.seen < floodSize; ++patience) {
        eventually([&] { return listener.seen >= floodSize; });
    }
    std::cout << "against a slow listener, receiving: " << memory.growthInMegabytes() << " MB\n";
    if (PeakMemory::canTell()) {
        EXPECT_LT(memory.growthInMegabytes(), mostMegabytes);
    }
    EXPECT_TRUE(isConnected());
    EXPECT_EQ(listener.seen, floodSize);
    EXPECT_EQ(engine().getMessageIds(me, "C", 2, false).size(),
              static_cast<std::size_t>(floodSize));
}

TEST_F(BackPressureTest, OfLargeMessagesForAListenerThatDoesNotReturnIsCountedInBytes) {
    startBoth({});
    Hold hold;
    recordOf("C").onEvent(hold.wait());
    std::string const large(1 << 20, 'x');
    int posted = 0;
    std::string const failure = failureOf<ZANConnectionUnavailableException>([&] {
        for (; posted < 200; ++posted) {
            engine().postInternalMessage(me, "C", "35=B|148=" + large);
        }
    });
    EXPECT_NE(failure.find("the listeners take no events"), std::string::npos) << failure;
    EXPECT_GE(posted, 15);
    EXPECT_LE(posted, 17) << "one is with the listener";
    hold.release();
    EXPECT_TRUE(eventually([] {
        engine().postInternalMessage(me, "C", "35=B|148=again");
        return true;
    }));
}

TEST_F(BackPressureTest, OfAListenerThatDoesNotReturnDoesNotReachAnotherConnection) {
    startBoth({});
    Hold hold;
    recordOf("C").onEvent(hold.wait());
    connectBoth();
    engine().sendMessage(me, "C", order("held"));
    auto const times = timesOfTalkingAtD(200);
    EXPECT_LT(times[100], 5ms);
    EXPECT_LT(times.back(), 1s);
    hold.release();
}

TEST_F(BackPressureTest, OfAListenerOfTheFacadeDoesNotReachAnotherConnection) {
    startBoth({});
    auto* const held = new EventRecorder;
    Hold hold;
    held->onEvent(hold.wait());
    recorders_.push_back(counted_ptr<IZANEventListener>(held));
    engine().subscribe(me, recorders_.back(), "C", ZANEngineDefs::APP_EVENT_TYPE);
    auto* const free = new EventRecorder;
    recorders_.push_back(counted_ptr<IZANEventListener>(free));
    engine().subscribe(me, recorders_.back(), "D", ZANEngineDefs::APP_EVENT_TYPE);
    connectBoth();
    engine().sendMessage(me, "C", order("held"));
    engine().sendMessage(me, "D", order("free"));
    EXPECT_TRUE(free->waitFor(isReport));
    hold.release();
    EXPECT_TRUE(held->waitFor(isReport));
}

TEST_F(BackPressureTest, IsNotCausedByAListenerThatThrows) {
    startBoth({});
    CapturedOutput const output;
    recordOf("C").onEvent([] { throw std::runtime_error("no"); });
    EventRecorder& next = recordOf("C");
    connectBoth();
    for (int i = 0; i < 100; ++i) {
        engine().sendMessage(me, "C", order(std::to_string(i)));
    }
    EXPECT_TRUE(next.waitFor(isReport, 100));
    EXPECT_LT(timesOfTalkingAtD(200)[100], 5ms);
    ZANEngineProxy::uninitialize();
    EXPECT_NE(output.text().find("Connection C: a listener failed on message "), std::string::npos);
}

} // namespace
