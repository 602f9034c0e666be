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
    recorder.onEvent = [&] {
        late += isStopped ? 1 : 0;
        std::this_thread::sleep_for(1ms);
    };
    for (int i = 0; i < 100; ++i) {
        trial.send(trial.newId());
    }
    ZANEngineProxy::uninitialize();
    isStopped = true;
    std::this_thread::sleep_for(300ms);
    EXPECT_EQ(late, 0) << "events came after the stop";
}

void mayBeStoppedByAListener(Trial& trial) {
    trial.connect();
    EventRecorder& recorder = trial.listen();
    std::atomic<bool> isBegun{false};
    std::atomic<bool> isEnded{false};
    recorder.onEvent = [&] {
        if (!isBegun.exchange(true)) {
            ZANEngineProxy::uninitialize();
            ZANEngineProxy::uninitialize();
            isEnded = true;
        }
    };
    trial.send(trial.newId());
    EXPECT_TRUE(trial.eventually([&] { return isEnded.load(); }));
    EXPECT_FALSE(ZANEngineProxy::isInitialized());
    EXPECT_TRUE(trial.eventually([&] { return !recorder.events().empty(); }));
    // The listener's thread comes home through the adapter.
    std::this_thread::sleep_for(100ms);
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
         {A::Connections, A::Sending, A::Events, A::StopInListener},
         mayBeStoppedByAListener},
    };
}

} // namespace zan::conformance
