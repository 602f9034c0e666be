// Messages that one thread builds and another one frees.
#include "Model.h"
#include "QuickFixPeer.h"

#include <benchmark/benchmark.h>

#include <array>
#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>

namespace {

constexpr std::size_t batchSize = 64;
constexpr std::size_t batches = 16;

/// A bounded queue of batches between the two threads: what is measured is the life of the
/// messages, not the lock, which is taken once for a batch.
template <class Message>
class HandOver {
public:
    using Batch = std::array<Message, batchSize>;

    /// The next batch to fill; waits until the other thread has emptied one.
    Batch& toFill() {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return filled_ - emptied_ < batches; });
        return ring_[filled_ % batches];
    }
    void wasFilled() { advance(filled_); }

    /// The next batch to empty, or null after `close` when all are empty.
    Batch* toEmpty() {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return filled_ != emptied_ || closed_; });
        return filled_ == emptied_ ? nullptr : &ring_[emptied_ % batches];
    }
    void wasEmptied() { advance(emptied_); }

    void close() {
        std::lock_guard const guard(mutex_);
        closed_ = true;
        changed_.notify_all();
    }

private:
    void advance(std::size_t& position) {
        {
            std::lock_guard const guard(mutex_);
            ++position;
        }
        changed_.notify_all();
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    std::array<Batch, batches> ring_;
    std::size_t filled_ = 0;
    std::size_t emptied_ = 0;
    bool closed_ = false;
};

template <class Message, class Build>
void handOver(benchmark::State& state, Build buildOne) {
    auto const queue = std::make_unique<HandOver<Message>>();
    std::thread freeing([&queue] {
        while (auto* const batch = queue->toEmpty()) {
            for (Message& message : *batch) {
                message = nullptr;
            }
            queue->wasEmptied();
        }
    });
    for (auto _ : state) {
        for (Message& message : queue->toFill()) {
            message = buildOne();
        }
        queue->wasFilled();
    }
    queue->close();
    freeing.join();
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(batchSize));
}

struct DestroyPeer {
    void operator()(void* message) const { quickfix::destroy(message); }
};

void buildHereFreeThere(benchmark::State& state) {
    handOver<counted_ptr<ZANMessage>>(state, [] { return model::newOrder(false); });
}

void buildHereFreeThereQuickFix(benchmark::State& state, quickfix::Values values) {
    using Message = std::unique_ptr<void, DestroyPeer>;
    handOver<Message>(state, [values] { return Message(quickfix::newOrder(false, values)); });
}

} // namespace

BENCHMARK(buildHereFreeThere)->UseRealTime();
BENCHMARK_CAPTURE(buildHereFreeThereQuickFix, ready, quickfix::Values::ready)->UseRealTime();
BENCHMARK_CAPTURE(buildHereFreeThereQuickFix, typed, quickfix::Values::typed)->UseRealTime();
