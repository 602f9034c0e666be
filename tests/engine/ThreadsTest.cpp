// What several threads may do at once with plain counts. ThreadSanitizer watches these tests.
#include "engine/ZANEngineProxy.h"

#include "adapter/DeliveryThread.h"
#include "adapter/ListenerCounts.h"
#include "errors/ZANEngineException.h"
#include "events/ZANAdminMessageEvent.h"
#include "events/ZANAppMessageEvent.h"
#include "support/RunningEngine.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <utility>
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

// The count of a listener is one, whoever holds it: the facade, and what else takes copies with the
// functions for it, as adapters and guaranteed listeners do.
TEST(Threads, CountAListenerThatTheFacadeAndAnAdapterTakeUpAtTheSameTime) {
    constexpr int rounds = 50000;
    std::atomic<int> alive{0};
    RunningEngine engine(true);
    Listener listener(new CountingListener(alive));
    auto const viaTheFacade = [&] {
        for (int i = 0; i < rounds; ++i) {
            engine.proxy().subscribe(UserTicket(), listener, "A", "APP");
            engine.proxy().unsubscribe(UserTicket(), listener, "A", "APP");
        }
    };
    auto const viaAnAdapter = [&] {
        for (int i = 0; i < rounds; ++i) {
            Listener own = zan::share(listener);
            zan::letGo(own);
        }
    };
    runTogether({viaTheFacade, viaAnAdapter, viaAnAdapter});
    EXPECT_EQ(1u, listener.use_count());
    EXPECT_EQ(1, alive);
}

// An adapter whose thread reports events while it starts, and after that.
class EagerAdapter : public RecordingAdapter {
public:
    EagerAdapter() { threadSafe = true; }
    ~EagerAdapter() override { stop(); }

    void initialize() override {
        thread_ = std::thread([this] {
            while (!isStopping_) {
                try {
                    report(counted_ptr<ZANEvent>(new ZANAppMessageEvent("A", nullptr)));
                    ++reported;
                } catch (ZANEngineException const&) {
                    std::this_thread::yield(); // nobody is there yet
                }
            }
        });
    }
    void uninitialize() override { stop(); }

    std::atomic<int> reported{0};

private:
    void stop() {
        isStopping_ = true;
        if (thread_.joinable()) {
            thread_.join();
        }
    }

    std::atomic<bool> isStopping_{false};
    std::thread thread_;
};

TEST(Threads, AnAdapterMayReportEventsWhileItStarts) {
    for (int i = 0; i < 50; ++i) {
        auto* const adapter = new EagerAdapter;
        counted_ptr<IZANEngineAdapter> own(adapter);
        ZANEngineProxy::initialize(emptyConfigProvider(), counted_ptr<IZANEngineAdapterFactory>(
                                                              new TestFactory(std::move(own))));
        while (adapter->reported < 3) {
            std::this_thread::yield();
        }
        ZANEngineProxy::uninitialize();
        EXPECT_FALSE(ZANEngineProxy::isInitialized());
    }
}

// What an adapter's thread does whose listeners may end the facade.
TEST(Threads, ListenersOfAFacadeThatOneOfThemEndsGoLastOnTheAdaptersThread) {
    class Ender : public CountingListener {
    public:
        using CountingListener::CountingListener;
        void processEvent(counted_ptr<ZANEvent>) override { ZANEngineProxy::uninitialize(); }
    };
    std::atomic<int> alive{0};
    counted_ptr<IZANEngineAdapter> adapter(new RecordingAdapter);
    ZANEngineProxy::initialize(emptyConfigProvider(),
                               counted_ptr<IZANEngineAdapterFactory>(new TestFactory(adapter)));
    for (char const* const type : {"APP", "ADMIN", "STATE"}) {
        Listener listener(new Ender(alive));
        ZANEngineProxy::getInstance().subscribe(UserTicket(), listener, "A", type);
    }
    std::thread([&] {
        zan::DeliveryThread const last;
        auto& reporting = static_cast<RecordingAdapter&>(*adapter);
        reporting.report(counted_ptr<ZANEvent>(new ZANAppMessageEvent("A", nullptr)));
        EXPECT_FALSE(ZANEngineProxy::isInitialized());
        EXPECT_EQ(3, alive) << "the engine of this thread is still there";
    }).join();
    EXPECT_EQ(0, alive);
}

} // namespace
