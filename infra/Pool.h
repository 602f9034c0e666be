/// Storage for the small objects that messages are made of.
///
/// Each thread keeps free lists of its own, one for every block size, and takes from them without a
/// lock. Lists are capped: a full batch goes to a depot that all threads share and is taken from
/// there by a thread that runs short, so a message may be built in one thread and freed in
/// another. What exceeds the depot, and what a thread keeps when it ends, is not held for ever.
/// Any thread may give any block back, also after the thread that took it has ended.
#ifndef ZANENGINE_INFRA_POOL_H
#define ZANENGINE_INFRA_POOL_H

#include <cstddef>
#include <new>

namespace zan::pool {

#ifdef ZAN_POOLS

inline constexpr std::size_t granularity = 16;
inline constexpr std::size_t largestBlock = 1024;
inline constexpr std::size_t sizeClasses = largestBlock / granularity;

/// A free block. `nextBatch` links whole batches in the depot.
struct FreeBlock {
    FreeBlock* next;
    FreeBlock* nextBatch;
};

/// The free blocks of one size in one thread: the list in use, and one full batch in reserve, so
/// that a thread at the border between two batches does not run to the depot each time.
struct FreeList {
    FreeBlock* active;
    FreeBlock* reserve;
    unsigned count;
    unsigned batch;
};

struct ThreadCache {
    FreeList lists[sizeClasses];
};

/// Null until the thread's first allocation and after the thread's end. One word, because the
/// static thread-local space that a dynamically loaded library may claim is small.
extern constinit thread_local ThreadCache* threadCache __attribute__((tls_model("initial-exec")));

void* allocateSlowly(std::size_t sizeClass);
void releaseSlowly(void* block, std::size_t sizeClass) noexcept;

/// Throws `std::bad_alloc`. `size` is at least 1.
inline void* allocate(std::size_t size) {
    if (size > largestBlock) [[unlikely]] {
        return ::operator new(size);
    }
    std::size_t const sizeClass = (size - 1) / granularity;
    if (ThreadCache* cache = threadCache) [[likely]] {
        FreeList& list = cache->lists[sizeClass];
        if (FreeBlock* block = list.active) [[likely]] {
            list.active = block->next;
            --list.count;
            return block;
        }
    }
    return allocateSlowly(sizeClass);
}

/// `size` is the one that the block was allocated with.
inline void release(void* block, std::size_t size) noexcept {
    if (size > largestBlock) [[unlikely]] {
        ::operator delete(block);
        return;
    }
    std::size_t const sizeClass = (size - 1) / granularity;
    if (ThreadCache* cache = threadCache) [[likely]] {
        FreeList& list = cache->lists[sizeClass];
        if (list.count < list.batch) [[likely]] {
            list.active = ::new (block) FreeBlock{list.active, nullptr};
            ++list.count;
            return;
        }
    }
    releaseSlowly(block, sizeClass);
}

#else

// Free lists hide a use after free from a sanitizer, so its builds do without them.
void* allocate(std::size_t size);
void release(void* block, std::size_t size) noexcept;

#endif

/// Puts the storage of a standard container into the pool.
template <class T>
struct Allocator {
    using value_type = T;

    Allocator() noexcept = default;
    template <class Other>
    Allocator(Allocator<Other> const&) noexcept {}

    T* allocate(std::size_t count) { return static_cast<T*>(pool::allocate(count * sizeof(T))); }
    void deallocate(T* first, std::size_t count) noexcept {
        pool::release(first, count * sizeof(T));
    }

    template <class Other>
    bool operator==(Allocator<Other> const&) const noexcept {
        return true;
    }
};

} // namespace zan::pool

#endif
