// Build, copy, read and print one message.
#include "Model.h"
#include "Order.h"
#include "QuickFixPeer.h"
#include "Yardsticks.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <memory>
#include <sstream>
#include <string>

namespace {

constexpr int lookUps = 4096;

struct PeerOrder {
    explicit PeerOrder(bool grouped)
        : message(quickfix::newOrder(grouped, quickfix::Values::ready), &quickfix::destroy) {}
    std::unique_ptr<void, void (*)(void*)> message;
};

int fieldsOf(bool grouped) {
    return grouped ? order::groupedFields : order::plainFields;
}

void build(benchmark::State& state, bool grouped) {
    for (auto _ : state) {
        auto const message = model::newOrder(grouped);
        benchmark::DoNotOptimize(message.get());
    }
    state.SetItemsProcessed(state.iterations());
}

void buildQuickFix(benchmark::State& state, bool grouped, quickfix::Values values) {
    for (auto _ : state) {
        quickfix::buildAndDestroy(grouped, values);
    }
    state.SetItemsProcessed(state.iterations());
}

// The least that a model with a field object and a control block for every field can do when
// both come from the heap.
void buildFloor(benchmark::State& state, bool grouped) {
    int const count = fieldsOf(grouped);
    void* blocks[2 * order::groupedFields];
    for (auto _ : state) {
        for (int i = 0; i < count; ++i) {
            blocks[2 * i] = std::malloc(48);
            blocks[2 * i + 1] = std::malloc(16);
            benchmark::DoNotOptimize(blocks[2 * i]);
            benchmark::DoNotOptimize(blocks[2 * i + 1]);
        }
        for (int i = 0; i < 2 * count; ++i) {
            std::free(blocks[i]);
        }
    }
    state.SetItemsProcessed(state.iterations());
}

void copy(benchmark::State& state, bool grouped) {
    auto const body = model::newBody(grouped);
    for (auto _ : state) {
        ZANFieldGroup const copied(*body);
        benchmark::DoNotOptimize(&copied);
    }
    state.SetItemsProcessed(state.iterations() * fieldsOf(grouped));
}

void copyQuickFix(benchmark::State& state, bool grouped) {
    PeerOrder const peer(grouped);
    for (auto _ : state) {
        quickfix::copyAndDestroy(peer.message.get());
    }
    state.SetItemsProcessed(state.iterations() * fieldsOf(grouped));
}

void getField(benchmark::State& state) {
    auto const body = model::newBody(false);
    auto const tags = model::randomBodyTags(lookUps);
    for (auto _ : state) {
        for (int const tag : tags) {
            benchmark::DoNotOptimize(body->getField(tag).get());
        }
    }
    state.SetItemsProcessed(state.iterations() * lookUps);
}

void getFieldQuickFix(benchmark::State& state) {
    PeerOrder const peer(false);
    auto const tags = model::randomBodyTags(lookUps);
    for (auto _ : state) {
        benchmark::DoNotOptimize(quickfix::lookUp(peer.message.get(), tags.data(), tags.size()));
    }
    state.SetItemsProcessed(state.iterations() * lookUps);
}

void walk(benchmark::State& state) {
    auto const body = model::newBody(false);
    for (auto _ : state) {
        ZANField const* last = nullptr;
        for (auto const fields = body->fieldIterator(); fields->hasNext(); fields->next()) {
            last = fields->current().get();
        }
        benchmark::DoNotOptimize(last);
    }
    state.SetItemsProcessed(state.iterations() * order::plainFields);
}

void walkQuickFix(benchmark::State& state) {
    PeerOrder const peer(false);
    for (auto _ : state) {
        benchmark::DoNotOptimize(quickfix::walk(peer.message.get()));
    }
    state.SetItemsProcessed(state.iterations() * order::bodyFields);
}

void virtualCall(benchmark::State& state, std::unique_ptr<VirtualCallee> (*newCallee)()) {
    auto const callee = newCallee();
    VirtualCallee* called = callee.get();
    benchmark::DoNotOptimize(called);
    for (auto _ : state) {
        benchmark::DoNotOptimize(called->answer());
    }
    state.SetItemsProcessed(state.iterations());
}

void print(benchmark::State& state) {
    auto const body = model::newBody(false);
    for (auto _ : state) {
        std::ostringstream os;
        os << *body;
        benchmark::DoNotOptimize(&os);
    }
    state.SetItemsProcessed(state.iterations());
}

void printQuickFix(benchmark::State& state) {
    PeerOrder const peer(false);
    for (auto _ : state) {
        std::ostringstream os;
        quickfix::print(os, peer.message.get());
        benchmark::DoNotOptimize(&os);
    }
    state.SetItemsProcessed(state.iterations());
}

// The stream alone: the finished text, written in one piece.
void printFloor(benchmark::State& state) {
    std::ostringstream printed;
    printed << *model::newBody(false);
    std::string const text = printed.str();
    for (auto _ : state) {
        std::ostringstream os;
        os << text;
        benchmark::DoNotOptimize(&os);
    }
    state.SetItemsProcessed(state.iterations());
}

} // namespace

BENCHMARK_CAPTURE(build, 12, false);
BENCHMARK_CAPTURE(build, G, true);
BENCHMARK_CAPTURE(buildQuickFix, 12_ready, false, quickfix::Values::ready);
BENCHMARK_CAPTURE(buildQuickFix, G_ready, true, quickfix::Values::ready);
BENCHMARK_CAPTURE(buildQuickFix, 12_typed, false, quickfix::Values::typed);
BENCHMARK_CAPTURE(buildQuickFix, G_typed, true, quickfix::Values::typed);
BENCHMARK_CAPTURE(buildFloor, 12, false);
BENCHMARK_CAPTURE(buildFloor, G, true);
BENCHMARK_CAPTURE(copy, 12, false);
BENCHMARK_CAPTURE(copy, G, true);
BENCHMARK_CAPTURE(copyQuickFix, 12, false);
BENCHMARK_CAPTURE(copyQuickFix, G, true);
BENCHMARK(getField);
BENCHMARK(getFieldQuickFix);
BENCHMARK(walk);
BENCHMARK(walkQuickFix);
BENCHMARK_CAPTURE(virtualCall, abroad, newVirtualCallee);
BENCHMARK_CAPTURE(virtualCall, atHome, newVirtualCalleeAtHome);
BENCHMARK(print);
BENCHMARK(printQuickFix);
BENCHMARK(printFloor);
