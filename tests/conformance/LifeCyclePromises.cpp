// How an adapter starts and stops.
#include "conformance/Trial.h"
#include "errors/ZANEngineException.h"

#include <atomic>
#include <thread>

namespace zan::conformance {

namespace {

using namespace std::chrono_literals;

void startsAndStops(Trial&) {
    EXPECT_TRUE(ZANEngineProxy::isInitialized());
    ZANEngineProxy::uninitialize();
    EXPECT_FALSE(ZANEngineProxy::isInitialized());
    EXPECT_EQ(failureOf<ZANEngineException>([] { ZANEngineProxy::getInstance(); }),
              "Proxy was not initialized!");
}

void mayBeRepeated(Trial& trial) {
    for (int i = 0; i < 3; ++i) {
        trial.restart();
        EXPECT_TRUE(ZANEngineProxy::isInitialized());
    }
}

void worksAfterARestart(Trial& trial) {
    for (int i = 0; i < 2; ++i) {
        trial.connect();
        EXPECT_TRUE(Trial::engine().isConnected(Trial::me, trial.name()));
        trial.restart();
    }
    trial.connect();
    EXPECT_GT(trial.send(trial.newId()), 0);
}

void stopsWhileItIsConnected(Trial& trial) {
    trial.connect();
    auto const before = std::chrono::steady_clock::now();
    ZANEngineProxy::uninitialize();
    EXPECT_LT(std::chrono::steady_clock::now() - before, 15s);
}

void stopsWhileEventsWait(Trial& trial) {
    EventRecorder& recorder = trial.listen();
    trial.connect();
    std::atomic<bool> isStopped{false};
    std::atomic<int> late{0};
    recorder.onEvent([&] {
        late += isStopped ? 1 : 0;
        std::this_thread::sleep_for(1ms);
    });
    for (int i = 0; i < 100; ++i) {
        trial.send(trial.newId());
    }
    ZANEngineProxy::uninitialize();
    isStopped = true;
    std::this_thread::sleep_for(300ms);
    EXPECT_EQ(late, 0) << "events came after the stop";
}

// A direct listener: the facade is gone when its `uninitialize` returns, while one that stops it
// inside of its own dispatch keeps it until the dispatch is done.
void mayBeStoppedByAListener(Trial& trial) {
    trial.connect();
    std::atomic<bool> isSent{false};
    std::atomic<bool> isStopped{false};
    EventRecorder& recorder = trial.record([&] {
        // Nobody else may use the facade while it is stopped.
        while (!isSent) {
            std::this_thread::yield();
        }
        if (!isStopped) {
            ZANEngineProxy::uninitialize();
            ZANEngineProxy::uninitialize();
            isStopped = true;
        }
    });
    trial.send(trial.newId());
    isSent = true;
    EXPECT_TRUE(trial.eventually([&] { return isStopped.load(); }));
    EXPECT_FALSE(ZANEngineProxy::isInitialized());
    // What the adapter has may stay taken until the listener's thread is done.
    EXPECT_TRUE(trial.eventually([&] {
        try {
            trial.restart();
            return true;
        } catch (InfraException const&) {
            return false;
        }
    }));
    trial.connect();
    EXPECT_FALSE(recorder.events().empty());
}

} // namespace

Promises lifeCyclePromises() {
    using A = Ability;
    return {
        {"LifeCycle", "StartsAndStops", {}, startsAndStops},
        {"LifeCycle", "MayBeRepeated", {}, mayBeRepeated},
        {"LifeCycle", "WorksAfterARestart", {A::Connections, A::Sending}, worksAfterARestart},
        {"LifeCycle", "StopsWhileItIsConnected", {A::Connections}, stopsWhileItIsConnected},
        {"LifeCycle",
         "StopsWhileEventsWait",
         {A::Connections, A::Sending, A::Events},
         stopsWhileEventsWait},
        {"LifeCycle",
         "MayBeStoppedByAListener",
         {A::Connections, A::Sending, A::Events, A::Direct, A::StopInListener},
         mayBeStoppedByAListener},
    };
}

} // namespace zan::conformance
