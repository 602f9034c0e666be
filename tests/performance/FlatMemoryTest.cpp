// Memory stays flat when messages wander between threads, and when threads come and go.
#include "TestOrder.h"

#include <gtest/gtest.h>

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace {

using Batch = std::vector<counted_ptr<ZANMessage>>;

constexpr std::size_t batchSize = 100;
constexpr std::size_t mostBatchesWaiting = 10;

/// Takes batches from one thread to another and lets the giving one wait when the taking one is
/// behind; otherwise the queue itself would be what grows.
class Batches {
public:
    void give(Batch batch) {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return waiting_.size() < mostBatchesWaiting; });
        waiting_.push_back(std::move(batch));
        changed_.notify_all();
    }

    /// An empty batch comes when the giving thread has given an empty one: it is the last.
    Batch take() {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return !waiting_.empty(); });
        Batch batch = std::move(waiting_.front());
        waiting_.pop_front();
        changed_.notify_all();
        return batch;
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Batch> waiting_;
};

Batch newBatch() {
    Batch batch;
    batch.reserve(batchSize);
    for (std::size_t i = 0; i < batchSize; ++i) {
        batch.push_back(newOrder());
    }
    return batch;
}

/// Builds messages on this thread for as long as it lives, while another thread frees them.
class HandOver {
public:
    HandOver() : freeing_([this] { freeAll(); }) {}
    HandOver(HandOver const&) = delete;
    HandOver& operator=(HandOver const&) = delete;
    ~HandOver() {
        batches_.give(Batch());
        freeing_.join();
    }

    void run(int messages) {
        for (int i = 0; i < messages; i += static_cast<int>(batchSize)) {
            batches_.give(newBatch());
        }
    }

private:
    void freeAll() {
        while (!batches_.take().empty()) {
        }
    }

    Batches batches_;
    std::thread freeing_;
};

void runShortThreads(int count) {
    for (int i = 0; i < count; ++i) {
        std::thread([] { newBatch(); }).join();
    }
}

} // namespace

TEST(Memory, StaysFlatOverAMillionMessagesBuiltHereAndFreedThere) {
#ifdef ZAN_TEST_WITHOUT_POOLS
    GTEST_SKIP() << "this build has no free lists that could grow";
#endif
    HandOver handOver;
    handOver.run(100'000);
    auto const before = residentBytes();
    handOver.run(1'000'000);
    EXPECT_LT(residentBytes() - before, allowedGrowth);
}

TEST(Memory, StaysFlatOverTwoThousandShortThreads) {
#ifdef ZAN_TEST_WITHOUT_POOLS
    GTEST_SKIP() << "this build has no free lists that could stay behind";
#endif
    runShortThreads(100);
    auto const before = residentBytes();
    runShortThreads(2'000);
    EXPECT_LT(residentBytes() - before, allowedGrowth);
}

// Each thread leaves half of its messages to the next one.
TEST(Memory, StaysFlatWhenShortThreadsFreeWhatTheirPredecessorsBuilt) {
#ifdef ZAN_TEST_WITHOUT_POOLS
    GTEST_SKIP() << "this build has no free lists that could stay behind";
#endif
    Batch left;
    auto const runThreads = [&left](int count) {
        for (int i = 0; i < count; ++i) {
            std::thread([&left] { left = newBatch(); }).join();
        }
    };
    runThreads(100);
    auto const before = residentBytes();
    runThreads(2'000);
    EXPECT_LT(residentBytes() - before, allowedGrowth);
}

TEST(Memory, OfAMessageIsGoodAfterItsMakerHasEnded) {
    for (int i = 0; i < 100; ++i) {
        Batch made;
        std::thread([&made] { made = newBatch(); }).join();
        for (auto const& message : made) {
            auto const body = message->getFieldGroup();
            ASSERT_EQ(body->getField(55)->getValue().asString(), "EURUSD");
            body->setFieldValue(55, std::string("changed by another thread than its maker's"));
            ASSERT_EQ(body->getField(55)->getValue().asString(),
                      "changed by another thread than its maker's");
        }
        made.clear();
        // What was given back is taken again, and must be nobody else's.
        auto const reused = newBatch();
        for (auto const& message : reused) {
            ASSERT_EQ(message->getFieldGroup()->getField(55)->getValue().asString(), "EURUSD");
        }
    }
}

TEST(Memory, OfAMessageMayBeFreedByAThreadThatIsEnding) {
    // The message outlives everything else of its thread, the thread's free lists included.
    struct Last {
        counted_ptr<ZANMessage> message;
    };
    for (int i = 0; i < 100; ++i) {
        std::thread([] {
            thread_local Last last;
            last.message = newOrder();
        }).join();
    }
    ASSERT_EQ(newOrder()->getFieldGroup()->getField(55)->getValue().asString(), "EURUSD");
}
