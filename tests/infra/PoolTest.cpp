// The pool, compiled into this program with its free lists, under a heap that counts and that can
// run out of memory.
#include "infra/Pool.h"
#include "support/CountingHeap.h"
#include "support/Seed.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <mutex>
#include <new>
#include <random>
#include <set>
#include <thread>
#include <utility>
#include <vector>

namespace pool = zan::pool;

namespace {

constexpr std::size_t beyondPool = pool::largestBlock + 100;

/// A block that is filled with a mark of its own, which nobody else may write over.
struct MarkedBlock {
    MarkedBlock(std::size_t wanted, unsigned char mark)
        : data(static_cast<unsigned char*>(pool::allocate(wanted))), size(wanted) {
        std::memset(data, mark, size);
    }

    /// Gives the block back; false when its mark was damaged.
    bool release() const {
        unsigned char const mark = *data;
        bool const whole =
            std::all_of(data, data + size, [mark](unsigned char byte) { return byte == mark; });
        pool::release(data, size);
        return whole;
    }

    unsigned char* data;
    std::size_t size;
};

/// Runs in a thread of its own and waits for its end.
void inThread(std::function<void()> const& task) {
    std::thread(task).join();
}

std::vector<void*> take(std::size_t size, std::size_t count) {
    std::vector<void*> blocks(count);
    for (void*& block : blocks) {
        block = pool::allocate(size);
    }
    return blocks;
}

void giveBack(std::vector<void*> const& blocks, std::size_t size) {
    for (void* const block : blocks) {
        pool::release(block, size);
    }
}

/// Every block of a size class, named by its largest size, that the pool holds; each as often as
/// the pool hands it out. They stay taken.
std::vector<void*> takeAllHeld(std::size_t size) {
    std::vector<void*> held;
    inThread([&] {
        for (;;) {
            std::size_t const before = heap::live(size);
            void* const block = pool::allocate(size);
            if (heap::live(size) > before) {
                pool::returnToHeap(block);
                return;
            }
            held.push_back(block);
        }
    });
    return held;
}

/// Sees to it that the pool loses no block of a size and holds none twice.
class Account {
public:
    /// Nobody but the pool has blocks of this size, now and when it is checked.
    explicit Account(std::size_t size) : size_(size), ofOthers_(ofOthers()) {}

    void expectEachBlockHeldOnce() const {
        EXPECT_EQ(ofOthers(), ofOthers_) << "blocks of " << size_ << " bytes are lost";
    }

private:
    /// How many blocks from the heap have this size and are none of the pool's.
    std::size_t ofOthers() const {
        std::size_t const live = heap::live(size_);
        std::vector<void*> const held = takeAllHeld(size_);
        std::set<void*> const different(held.begin(), held.end());
        EXPECT_EQ(different.size(), held.size()) << "blocks of " << size_ << " are held twice";
        inThread([&] { giveBack(held, size_); });
        return live - different.size();
    }

    std::size_t size_;
    std::size_t ofOthers_;
};

/// Blocks that many threads give to each other.
class Exchange {
public:
    void put(MarkedBlock block) {
        std::lock_guard const guard(mutex_);
        blocks_.push_back(block);
    }

    /// Any block, or none when there are few.
    std::vector<MarkedBlock> takeOne(std::size_t random, std::size_t kept) {
        std::lock_guard const guard(mutex_);
        if (blocks_.size() <= kept) {
            return {};
        }
        std::swap(blocks_[random % blocks_.size()], blocks_.back());
        MarkedBlock const taken = blocks_.back();
        blocks_.pop_back();
        return {taken};
    }

private:
    std::mutex mutex_;
    std::vector<MarkedBlock> blocks_;
};

/// Returns how many blocks were damaged.
int exchangeBlocks(Exchange& exchange, std::size_t smallest, std::size_t largest,
                   std::mt19937::result_type seed) {
    constexpr int steps = 600;
    std::mt19937 random(seed);
    int damaged = 0;
    for (int i = 0; i < steps; ++i) {
        std::size_t const size = smallest + random() % (largest - smallest + 1);
        exchange.put({size, static_cast<unsigned char>(random())});
        std::size_t const kept = i % 200 < 100 ? 400 : 0;
        for (MarkedBlock const& block : exchange.takeOne(random(), kept)) {
            damaged += block.release() ? 0 : 1;
        }
    }
    return damaged;
}

/// Threads that begin and end all the time. Returns how many blocks were damaged.
int exchangeAmongThreads(std::size_t smallest, std::size_t largest, int generations,
                         std::mt19937& random) {
    Exchange exchange;
    std::vector<int> damaged(3, 0);
    for (int generation = 0; generation < generations; ++generation) {
        std::vector<std::thread> threads;
        for (int& count : damaged) {
            threads.emplace_back([&exchange, &count, smallest, largest, seed = random()] {
                count += exchangeBlocks(exchange, smallest, largest, seed);
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    }
    int total = 0;
    inThread([&] {
        for (auto last = exchange.takeOne(0, 0); !last.empty(); last = exchange.takeOne(0, 0)) {
            total += last.front().release() ? 0 : 1;
        }
    });
    for (int const count : damaged) {
        total += count;
    }
    return total;
}

/// Fills and empties magazines in two threads. Blocks that cannot be had are done without.
void takeHereGiveBackThere(std::size_t size) {
    constexpr std::size_t magazines = 6;
    std::vector<void*> blocks;
    blocks.reserve(magazines * pool::magazineSize(pool::sizeClassOf(size)));
    inThread([&] {
        try {
            while (blocks.size() < blocks.capacity()) {
                blocks.push_back(pool::allocate(size));
            }
        } catch (std::bad_alloc const&) {
        }
    });
    inThread([&] { giveBack(blocks, size); });
}

constexpr int allIsWell = 0;
constexpr int somethingIsWrong = 1;
constexpr int nothingFailed = 2;

/// What becomes of a pool that finds no memory after so many requests. Ends the process, because
/// only the pool of a fresh one asks for all that it can ask for.
[[noreturn]] void endAfterFailure(std::size_t size, std::size_t requests) {
    Account const account(size);
    heap::failAfter(requests);
    takeHereGiveBackThere(size);
    bool const hasFailed = heap::hasFailed();
    takeHereGiveBackThere(size);
    account.expectEachBlockHeldOnce();
    if (testing::Test::HasFailure()) {
        std::_Exit(somethingIsWrong);
    }
    std::_Exit(hasFailed ? allIsWell : nothingFailed);
}

/// Gives a block back when the thread's other objects are gone already.
struct LastOfItsThread {
    ~LastOfItsThread() {
        giveBack(blocks, size);
        giveBack(take(size, 300), size);
    }
    static constexpr std::size_t size = 48;
    std::vector<void*> blocks;
};

} // namespace

// The first, because the pools of the processes that it starts are copies of this one's.
TEST(Pool, LosesAndDoublesNothingWhenTheHeapFailsAtAnyStep) {
    constexpr std::size_t size = 1008;
    constexpr std::size_t someSteps = 50;
    for (std::size_t step = 0; step < someSteps; ++step) {
        SCOPED_TRACE(step);
        ASSERT_EXIT(endAfterFailure(size, step), testing::ExitedWithCode(allIsWell), "");
    }
    ASSERT_EXIT(endAfterFailure(size, 10 * someSteps), testing::ExitedWithCode(nothingFailed), "");
}

TEST(Pool, KeepsBlocksOfEverySizeThatAreTakenInOneThreadAndGivenBackInAnother) {
    std::mt19937 random(testSeed());
    for (std::size_t sizeClass = 0; sizeClass < pool::sizeClasses; ++sizeClass) {
        std::size_t const largest = pool::blockSize(sizeClass);
        Account const account(largest);
        EXPECT_EQ(exchangeAmongThreads(largest - pool::granularity + 1, largest, 2, random), 0);
        account.expectEachBlockHeldOnce();
    }
}

TEST(Pool, KeepsBlocksOfMixedSizesWhileThreadsComeAndGo) {
    std::mt19937 random(testSeed());
    EXPECT_EQ(exchangeAmongThreads(1, beyondPool, 30, random), 0);
}

TEST(Pool, HandsEachBlockToOneThreadWhileMagazinesGoToTheDepot) {
    constexpr std::size_t size = 48;
    std::size_t const blocks = 5U * pool::magazineSize(pool::sizeClassOf(size));
    std::vector<void*> here = take(size, blocks);
    giveBack(here, size);
    here = take(size, blocks / 2);
    std::vector<void*> there;
    inThread([&] { there = take(size, blocks); });
    std::set<void*> different(here.begin(), here.end());
    different.insert(there.begin(), there.end());
    EXPECT_EQ(different.size(), here.size() + there.size());
    giveBack(here, size);
    giveBack(there, size);
}

TEST(Pool, TakesBlocksBackFromAThreadThatIsEnding) {
    Account const account(LastOfItsThread::size);
    inThread([] {
        thread_local LastOfItsThread last;
        last.blocks = take(LastOfItsThread::size, 300);
    });
    account.expectEachBlockHeldOnce();
}

TEST(Pool, KeepsNoMoreThanItsDepotHasRoomFor) {
    constexpr std::size_t size = 1024;
    constexpr std::size_t magazines = 50;
    inThread([] { giveBack(take(size, 5000), size); });
    EXPECT_LE(takeAllHeld(size).size(), magazines * pool::magazineSize(pool::sizeClassOf(size)));
}
