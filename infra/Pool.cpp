#include "infra/Pool.h"

#include "infra/counted_ptr.h"

#include <algorithm>
#include <memory>
#include <mutex>
#include <utility>

namespace zan {

namespace pool {

#ifdef ZAN_POOLS

constinit thread_local ThreadCache* threadCache = nullptr;

namespace {

constexpr std::size_t blockSize(std::size_t sizeClass) {
    return (sizeClass + 1) * granularity;
}

/// How many blocks make a batch: about 8 KiB worth.
constexpr unsigned batchSize(std::size_t sizeClass) {
    return static_cast<unsigned>(std::clamp<std::size_t>(8192 / blockSize(sizeClass), 8, 128));
}

/// Full batches of one size that no thread has in use.
class Depot {
public:
    /// A full batch, or null.
    FreeBlock* take() {
        std::lock_guard guard(mutex_);
        FreeBlock* batch = batches_;
        if (batch) {
            batches_ = batch->nextBatch;
            --count_;
        }
        return batch;
    }

    /// False when the depot is full; the batch then stays the caller's.
    bool put(FreeBlock* batch) {
        std::lock_guard guard(mutex_);
        if (count_ == capacity) {
            return false;
        }
        batch->nextBatch = batches_;
        batches_ = batch;
        ++count_;
        return true;
    }

private:
    static constexpr unsigned capacity = 48;

    std::mutex mutex_;
    FreeBlock* batches_ = nullptr;
    unsigned count_ = 0;
};

// Constant-initialised and trivially destroyed: blocks are given back until the process ends.
constinit Depot depots[sizeClasses];

void freeAll(FreeBlock* block) noexcept {
    while (block) {
        ::operator delete(std::exchange(block, block->next));
    }
}

void store(FreeBlock* batch, std::size_t sizeClass) noexcept {
    if (!depots[sizeClass].put(batch)) {
        freeAll(batch);
    }
}

/// Set when the thread's cache is gone for good: objects that outlive it bypass the lists.
constinit thread_local bool cacheClosed = false;

struct CacheOwner {
    std::unique_ptr<ThreadCache> cache = std::make_unique<ThreadCache>();

    CacheOwner() {
        for (std::size_t i = 0; i < sizeClasses; ++i) {
            cache->lists[i].batch = batchSize(i);
        }
        threadCache = cache.get();
    }

    ~CacheOwner() {
        threadCache = nullptr;
        cacheClosed = true;
        for (std::size_t i = 0; i < sizeClasses; ++i) {
            FreeList& list = cache->lists[i];
            if (list.reserve) {
                store(list.reserve, i);
            }
            if (list.count == list.batch) {
                store(list.active, i);
            } else {
                freeAll(list.active);
            }
        }
    }
};

/// The cache of this thread, made on first use; null when the thread is ending or there is no
/// memory for a cache.
ThreadCache* openCache() noexcept {
    if (cacheClosed) {
        return nullptr;
    }
    try {
        thread_local CacheOwner owner;
        return owner.cache.get();
    } catch (std::bad_alloc const&) {
        return nullptr;
    }
}

} // namespace

void* allocateSlowly(std::size_t sizeClass) {
    ThreadCache* cache = openCache();
    if (!cache) {
        return ::operator new(blockSize(sizeClass));
    }
    FreeList& list = cache->lists[sizeClass];
    FreeBlock* batch = std::exchange(list.reserve, nullptr);
    if (!batch) {
        batch = depots[sizeClass].take();
    }
    if (!batch) {
        return ::operator new(blockSize(sizeClass));
    }
    list.active = batch->next;
    list.count = list.batch - 1;
    return batch;
}

void releaseSlowly(void* block, std::size_t sizeClass) noexcept {
    ThreadCache* cache = openCache();
    if (!cache) {
        ::operator delete(block);
        return;
    }
    FreeList& list = cache->lists[sizeClass];
    if (list.count == list.batch) {
        if (list.reserve) {
            store(list.reserve, sizeClass);
        }
        list.reserve = std::exchange(list.active, nullptr);
        list.count = 0;
    }
    list.active = ::new (block) FreeBlock{list.active, nullptr};
    ++list.count;
}

#else

void* allocate(std::size_t size) {
    return ::operator new(size);
}

void release(void* block, std::size_t) noexcept {
    ::operator delete(block);
}

#endif

} // namespace pool

void* allocateCountBlock() {
    return pool::allocate(sizeof(CountBlock));
}

void releaseCountBlock(void* block) noexcept {
    pool::release(block, sizeof(CountBlock));
}

} // namespace zan
