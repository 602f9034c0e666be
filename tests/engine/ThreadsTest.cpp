// What several threads may do at once with plain counts. ThreadSanitizer watches these tests.
#include "engine/ZANEngineProxy.h"

#include "events/ZANAdminMessageEvent.h"
#include "events/ZANAppMessageEvent.h"
#include "support/RunningEngine.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace {

using Listener = counted_ptr<IZANEventListener>;

void runTogether(std::vector<std::function<void()>> const& jobs) {
    std::vector<std::thread> threads;
    for (auto const& job : jobs) {
        threads.emplace_back(job);
    }
    for (auto& thread : threads) {
        thread.join();
    }
}

class CountingListener : public IZANEventListener {
public:
    explicit CountingListener(std::atomic<int>& alive) : alive_(alive) { ++alive_; }
    CountingListener(CountingListener const&) = delete;
    CountingListener& operator=(CountingListener const&) = delete;
    ~CountingListener() override { --alive_; }
    void processEvent(counted_ptr<ZANEvent>) override { ++events; }

    std::atomic<int> events{0};

private:
    std::atomic<int>& alive_;
};

counted_ptr<ZANMessage> newMessage(int id) {
    counted_ptr<ZANFieldGroup> const body(new ZANFieldGroup("D"));
    body->setFieldValue(11, id);
    return counted_ptr<ZANMessage>(new ZANMessage(body));
}

TEST(Threads, CallsNeverOverlapInAnAdapterThatIsNotThreadSafe) {
    RunningEngine engine;
    int inside = 0; // deliberately not atomic: the facade's mutex guards it
    int overlaps = 0;
    engine.adapter().onCall = [&] {
        overlaps += inside;
        ++inside;
        std::this_thread::yield();
        --inside;
    };
    auto const send = [&] {
        for (int i = 0; i < 500; ++i) {
            engine.proxy().sendMessage(UserTicket(), "A", newMessage(i));
        }
    };
    runTogether({send, send, send, send});
    EXPECT_EQ(0, overlaps);
    EXPECT_EQ(2000u, engine.adapter().calls().size());
}

TEST(Threads, CallsReachAThreadSafeAdapterAtTheSameTime) {
    RunningEngine engine(true);
    std::atomic<int> inside{0};
    engine.adapter().onCall = [&] {
        ++inside;
        while (inside < 2) {
            std::this_thread::yield();
        }
    };
    auto const ask = [&] { engine.proxy().isConnected(UserTicket(), "A"); };
    runTogether({ask, ask});
    EXPECT_EQ(2, inside);
}

TEST(Threads, TwoAdapterThreadsDispatchWhileTwoOthersSubscribeAndUnsubscribe) {
    constexpr int rounds = 3000;
    std::atomic<int> alive{0};
    RunningEngine engine(true);
    UserTicket const ticket;
    std::vector<Listener> lasting;
    for (int i = 0; i < 4; ++i) {
        lasting.emplace_back(new CountingListener(alive));
        engine.proxy().subscribe(ticket, lasting.back(), "A", "APP");
    }
    auto const dispatch = [&] {
        for (int i = 0; i < rounds; ++i) {
            engine.adapter().report(counted_ptr<ZANEvent>(new ZANAppMessageEvent("A", nullptr)));
        }
    };
    // Both threads change the subscription of the same listener, one also of its own.
    Listener own(new CountingListener(alive));
    auto const change = [&](Listener& listener) {
        for (int i = 0; i < rounds; ++i) {
            engine.proxy().unsubscribe(ticket, lasting.front(), "A", "APP");
            engine.proxy().subscribe(ticket, lasting.front(), "A", "APP");
            engine.proxy().subscribe(ticket, listener, "A", "APP");
            engine.proxy().unsubscribe(ticket, listener, "A", "APP");
        }
    };
    runTogether({dispatch, dispatch, [&] { change(own); }, [&] { change(lasting[1]); }});
    for (std::size_t i = 2; i < 4; ++i) {
        EXPECT_EQ(2 * rounds, static_cast<CountingListener&>(*lasting[i]).events);
    }
    EXPECT_EQ(1u, own.use_count());
    EXPECT_EQ(5, alive);
}

// A listener that nobody but the registry holds, and that takes itself off with its first event.
class OneShotListener : public IZANEventListener {
public:
    OneShotListener(ZANEngineProxy& proxy, std::atomic<int>& alive) : proxy_(proxy), alive_(alive) {
        ++alive_;
    }
    OneShotListener(OneShotListener const&) = delete;
    OneShotListener& operator=(OneShotListener const&) = delete;
    ~OneShotListener() override { --alive_; }
    void processEvent(counted_ptr<ZANEvent> event) override {
        if (!done_.exchange(true)) {
            proxy_.unsubscribe(UserTicket(), self, event->getConnectionName(), "APP");
            dropped = true;
        }
    }

    Listener self;
    std::atomic<bool> dropped{false};

private:
    ZANEngineProxy& proxy_;
    std::atomic<int>& alive_;
    std::atomic<bool> done_{false};
};

TEST(Threads, ListenersTakeThemselvesOffWhileTheOtherThreadDispatchesToThem) {
    constexpr int rounds = 300;
    std::atomic<int> alive{0};
    {
        RunningEngine engine(true);
        std::vector<Listener> handles;
        for (int i = 0; i < rounds; ++i) {
            handles.emplace_back(new OneShotListener(engine.proxy(), alive));
            static_cast<OneShotListener&>(*handles.back()).self = handles.back();
            engine.proxy().subscribe(UserTicket(), handles.back(), "A", "APP");
        }
        auto const dispatch = [&] {
            for (int i = 0; i < 50; ++i) {
                engine.adapter().report(
                    counted_ptr<ZANEvent>(new ZANAppMessageEvent("A", nullptr)));
            }
        };
        runTogether({dispatch, dispatch});
        for (auto& handle : handles) {
            auto& listener = static_cast<OneShotListener&>(*handle);
            EXPECT_TRUE(listener.dropped);
            EXPECT_EQ(2u, handle.use_count());
            listener.self.reset();
        }
    }
    EXPECT_EQ(0, alive);
}

} // namespace
