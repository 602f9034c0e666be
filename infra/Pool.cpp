#include "infra/Pool.h"

#include "infra/PoolHeap.h"

#include <memory>
#include <mutex>
#include <utility>

namespace zan {

namespace pool {

#ifdef ZAN_POOLS

constinit thread_local ThreadCache* threadCache = nullptr;

/// Holds blocks while it is full, and nothing while it is empty.
struct Magazine {
    Magazine* next;
    void* blocks[1];
};

namespace {

Magazine* newMagazine(std::size_t sizeClass) {
    std::size_t const size = sizeof(Magazine) + (magazineSize(sizeClass) - 1) * sizeof(void*);
    return static_cast<Magazine*>(takeFromHeap(size));
}

void freeBlocks(void* const* blocks, unsigned count) noexcept {
    for (unsigned i = 0; i < count; ++i) {
        returnToHeap(blocks[i]);
    }
}

/// The magazines of one size that no thread has in use.
class Depot {
public:
    /// A full magazine in exchange for an empty one, or null when there is none.
    Magazine* takeFull(Magazine* empty) {
        std::lock_guard const guard(mutex_);
        Magazine* const full = full_;
        if (full) {
            full_ = full->next;
            --count_;
            push(empty_, empty);
        }
        return full;
    }

    /// An empty magazine in exchange for a full one, or null when the depot has enough blocks: the
    /// full one then stays the caller's. Throws `std::bad_alloc`.
    Magazine* takeEmpty(Magazine* full, std::size_t sizeClass) {
        std::lock_guard const guard(mutex_);
        if (count_ == capacity) {
            return nullptr;
        }
        Magazine* const empty = popEmpty(sizeClass);
        push(full_, full);
        ++count_;
        return empty;
    }

    /// An empty magazine for a thread that begins. Throws `std::bad_alloc`.
    Magazine* lendEmpty(std::size_t sizeClass) {
        std::lock_guard const guard(mutex_);
        return popEmpty(sizeClass);
    }

    /// Takes what a thread leaves; false when it is full and there is no room for it.
    bool leave(Magazine* magazine, bool isFull) {
        std::lock_guard const guard(mutex_);
        if (isFull && count_ == capacity) {
            return false;
        }
        push(isFull ? full_ : empty_, magazine);
        count_ += isFull ? 1 : 0;
        return true;
    }

private:
    static constexpr unsigned capacity = 48;

    static void push(Magazine*& list, Magazine* magazine) {
        magazine->next = list;
        list = magazine;
    }

    Magazine* popEmpty(std::size_t sizeClass) {
        if (!empty_) {
            return newMagazine(sizeClass);
        }
        Magazine* const empty = empty_;
        empty_ = empty->next;
        return empty;
    }

    std::mutex mutex_;
    Magazine* full_ = nullptr;
    Magazine* empty_ = nullptr;
    unsigned count_ = 0;
};

// Constant-initialised and trivially destroyed: blocks are given back until the process ends.
constinit Depot depots[sizeClasses];

void load(FreeList& list, Magazine* magazine, unsigned count) {
    list.active = magazine;
    list.blocks = magazine->blocks;
    list.count = count;
}

void open(FreeList& list, std::size_t sizeClass) {
    Magazine* const active = depots[sizeClass].lendEmpty(sizeClass);
    try {
        list.reserve = depots[sizeClass].lendEmpty(sizeClass);
    } catch (...) {
        returnToHeap(active);
        throw;
    }
    load(list, active, 0);
    list.capacity = magazineSize(sizeClass);
}

void leave(Magazine* magazine, bool isFull, std::size_t sizeClass) {
    if (!depots[sizeClass].leave(magazine, isFull)) {
        freeBlocks(magazine->blocks, magazineSize(sizeClass));
        returnToHeap(magazine);
    }
}

void close(FreeList& list, std::size_t sizeClass) {
    if (list.capacity == 0) {
        return;
    }
    bool const isFull = list.count == list.capacity;
    if (!isFull) {
        freeBlocks(list.blocks, list.count);
    }
    leave(list.active, isFull, sizeClass);
    leave(list.reserve, list.reserveIsFull, sizeClass);
}

/// Set when the thread's cache is gone for good: objects that outlive it bypass the magazines.
constinit thread_local bool cacheClosed = false;

struct CacheOwner {
    std::unique_ptr<ThreadCache> cache = std::make_unique<ThreadCache>();

    CacheOwner() { threadCache = cache.get(); }

    ~CacheOwner() {
        threadCache = nullptr;
        cacheClosed = true;
        for (std::size_t i = 0; i < sizeClasses; ++i) {
            close(cache->lists[i], i);
        }
    }
};

/// The list of this thread, made on first use; null when the thread is ending or there is no memory
/// for one.
FreeList* openList(std::size_t sizeClass) noexcept {
    if (cacheClosed) {
        return nullptr;
    }
    try {
        thread_local CacheOwner owner;
        FreeList& list = owner.cache->lists[sizeClass];
        if (list.capacity == 0) {
            open(list, sizeClass);
        }
        return &list;
    } catch (std::bad_alloc const&) {
        return nullptr;
    }
}

/// Makes the active magazine, which is empty, a full one; false when there is none to be had.
bool refill(FreeList& list, std::size_t sizeClass) {
    if (list.reserveIsFull) {
        Magazine* const full = list.reserve;
        list.reserve = list.active;
        list.reserveIsFull = false;
        load(list, full, list.capacity);
        return true;
    }
    Magazine* const full = depots[sizeClass].takeFull(list.active);
    if (full) {
        load(list, full, list.capacity);
    }
    return full != nullptr;
}

/// Makes the active magazine, which is full, an empty one.
void drain(FreeList& list, std::size_t sizeClass) noexcept {
    Magazine* empty = list.reserve;
    if (list.reserveIsFull) {
        try {
            empty = depots[sizeClass].takeEmpty(list.reserve, sizeClass);
        } catch (std::bad_alloc const&) {
            empty = nullptr;
        }
        if (!empty) {
            empty = list.reserve;
            freeBlocks(empty->blocks, list.capacity);
        }
    }
    list.reserve = list.active;
    list.reserveIsFull = true;
    load(list, empty, 0);
}

} // namespace

void* allocateSlowly(std::size_t sizeClass) {
    FreeList* const list = openList(sizeClass);
    if (list && refill(*list, sizeClass)) {
        return list->blocks[--list->count];
    }
    return takeFromHeap(blockSize(sizeClass));
}

void releaseSlowly(void* block, std::size_t sizeClass) noexcept {
    FreeList* const list = openList(sizeClass);
    if (!list) {
        returnToHeap(block);
        return;
    }
    if (list->count == list->capacity) {
        drain(*list, sizeClass);
    }
    list->blocks[list->count++] = block;
}

#else

void* allocate(std::size_t size) {
    return takeFromHeap(size);
}

void release(void* block, std::size_t) noexcept {
    returnToHeap(block);
}

#endif

} // namespace pool

} // namespace zan
