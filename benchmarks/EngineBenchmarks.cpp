// What the facade adds to a call, and to the delivery of an event.
#include "IdleAdapter.h"
#include "Yardsticks.h"

#include "adapter/IZANEventListener.h"
#include "engine/ZANEngineProxy.h"
#include "events/ZANAppMessageEvent.h"
#include "events/ZANEngineDefs.h"

#include <benchmark/benchmark.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace {

/// Events go round among so many connections, spread over all that there are.
constexpr std::size_t activeConnections = 16;

void callFacade(benchmark::State& state, bool adapterThreadSafe) {
    IdleEngine const engine(adapterThreadSafe);
    ZANEngineProxy* facade = &ZANEngineProxy::getInstance();
    benchmark::DoNotOptimize(facade);
    UserTicket const ticket("benchmark", "");
    for (auto _ : state) {
        benchmark::DoNotOptimize(facade->getMillisTime(ticket));
    }
    state.SetItemsProcessed(state.iterations());
}

class CountingListener final : public IZANEventListener {
public:
    explicit CountingListener(std::int64_t& events) : events_(events) {}
    void processEvent(counted_ptr<ZANEvent>) override { ++events_; }

private:
    std::int64_t& events_;
};

std::vector<counted_ptr<IZANEventListener>> newListeners(std::int64_t count, std::int64_t& events) {
    std::vector<counted_ptr<IZANEventListener>> listeners;
    for (std::int64_t i = 0; i < count; ++i) {
        listeners.push_back(counted_ptr<IZANEventListener>(new CountingListener(events)));
    }
    return listeners;
}

std::string connectionName(std::int64_t index) {
    return "CONNECTION-" + std::to_string(index);
}

using Events = std::array<counted_ptr<ZANEvent>, activeConnections>;

Events newEvents(std::int64_t connections) {
    Events events;
    counted_ptr<ZANMessage> const message(new ZANMessage);
    for (std::size_t i = 0; i < activeConnections; ++i) {
        auto const index = connections * static_cast<std::int64_t>(i) /
                           static_cast<std::int64_t>(activeConnections);
        events[i] = counted_ptr<ZANEvent>(new ZANAppMessageEvent(connectionName(index), message));
    }
    return events;
}

// Arguments: how many listeners each connection has, and how many connections there are.
void dispatch(benchmark::State& state) {
    auto const connections = state.range(1);
    IdleEngine engine(true);
    std::int64_t delivered = 0;
    UserTicket const ticket("benchmark", "");
    for (std::int64_t i = 0; i < connections; ++i) {
        for (auto& listener : newListeners(state.range(0), delivered)) {
            ZANEngineProxy::getInstance().subscribe(ticket, listener, connectionName(i),
                                                    ZANEngineDefs::APP_EVENT_TYPE);
        }
    }
    auto const events = newEvents(connections);
    std::size_t next = 0;
    for (auto _ : state) {
        engine.adapter().report(events[next++ % activeConnections]);
    }
    if (delivered != state.iterations() * state.range(0)) {
        state.SkipWithError("not every listener got every event");
    }
    state.SetItemsProcessed(state.iterations());
}

// The same events for the same number of listeners, without a facade.
void dispatchFloor(benchmark::State& state) {
    std::int64_t delivered = 0;
    auto listeners = newListeners(state.range(0), delivered);
    auto* looped = &listeners;
    benchmark::DoNotOptimize(looped);
    auto const events = newEvents(1);
    std::size_t next = 0;
    for (auto _ : state) {
        deliver(*looped, events[next++ % activeConnections]);
    }
    state.SetItemsProcessed(state.iterations());
}

} // namespace

BENCHMARK_CAPTURE(callFacade, withoutLock, true);
BENCHMARK_CAPTURE(callFacade, withLock, false);
BENCHMARK(dispatch)->Args({8, 100})->Args({64, 100})->Args({8, 1})->Args({8, 10000});
BENCHMARK(dispatchFloor)->Arg(8)->Arg(64);
