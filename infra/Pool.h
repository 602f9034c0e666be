/// Storage for the small objects that messages are made of.
///
/// Each thread keeps free blocks of its own, in one magazine for every block size, and takes from
/// it and gives to it without a lock. Full magazines go to a depot that all threads share and are
/// taken from there by a thread that runs short, so a message may be built in one thread and freed
/// in another. What exceeds the depot, and what a thread keeps when it ends, is not held for ever.
/// Any thread may give any block back, also after the thread that took it has ended.
#ifndef ZANENGINE_INFRA_POOL_H
#define ZANENGINE_INFRA_POOL_H

#include "infra/PoolHeap.h"

#include <cstddef>

#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define __SANITIZE_THREAD__ 1
#endif
#endif
#ifdef __SANITIZE_THREAD__
extern "C" void __tsan_write_range(void* block, std::size_t size);
#endif

namespace zan::pool {

#ifdef ZAN_POOLS

inline constexpr std::size_t granularity = 16;
inline constexpr std::size_t largestBlock = 1024;
inline constexpr std::size_t sizeClasses = largestBlock / granularity;

constexpr std::size_t sizeClassOf(std::size_t size) {
    return (size - 1) / granularity;
}
constexpr std::size_t blockSize(std::size_t sizeClass) {
    return (sizeClass + 1) * granularity;
}

/// How many blocks fill a magazine: about 8 KiB worth.
constexpr unsigned magazineSize(std::size_t sizeClass) {
    std::size_t const blocks = 8192 / blockSize(sizeClass);
    return static_cast<unsigned>(blocks > 128 ? 128 : blocks);
}

struct Magazine;

/// The free blocks of one size in one thread. They are listed in an array and not linked through
/// the blocks: taking one does not have to wait for the one before, and giving one back does not
/// touch it.
struct FreeList {
    void** blocks;
    unsigned count;
    /// 0 until the list has its magazines.
    unsigned capacity;
    Magazine* active;
    /// Full or empty, so that a thread at the border does not run to the depot each time.
    Magazine* reserve;
    bool reserveIsFull;
};

struct ThreadCache {
    FreeList lists[sizeClasses];

    static void* operator new(std::size_t size) { return takeFromHeap(size); }
    static void operator delete(void* cache) noexcept { returnToHeap(cache); }
};

/// Null until the thread's first allocation and after the thread's end. One word, because the
/// static thread-local space that a dynamically loaded library may claim is small.
extern constinit thread_local ThreadCache* threadCache __attribute__((tls_model("initial-exec")));

void* allocateSlowly(std::size_t sizeClass);
void releaseSlowly(void* block, std::size_t sizeClass) noexcept;

/// Throws `std::bad_alloc`. `size` is at least 1.
[[gnu::always_inline]] inline void* allocate(std::size_t size) {
    if (size > largestBlock) [[unlikely]] {
        return takeFromHeap(size);
    }
    std::size_t const sizeClass = sizeClassOf(size);
    if (ThreadCache* cache = threadCache) [[likely]] {
        FreeList& list = cache->lists[sizeClass];
        if (list.count > 0) [[likely]] {
            return list.blocks[--list.count];
        }
    }
    return allocateSlowly(sizeClass);
}

#ifdef __SANITIZE_THREAD__
/// A block that is given back counts as written to, as with `free`: whoever still uses it is seen.
inline void tellSanitizer(void* block, std::size_t size) noexcept {
    __tsan_write_range(block, size);
}
#else
inline void tellSanitizer(void*, std::size_t) noexcept {}
#endif

/// `size` is the one that the block was allocated with.
[[gnu::always_inline]] inline void release(void* block, std::size_t size) noexcept {
    tellSanitizer(block, size);
    if (size > largestBlock) [[unlikely]] {
        returnToHeap(block);
        return;
    }
    std::size_t const sizeClass = sizeClassOf(size);
    if (ThreadCache* cache = threadCache) [[likely]] {
        FreeList& list = cache->lists[sizeClass];
        if (list.count < list.capacity) [[likely]] {
            list.blocks[list.count++] = block;
            return;
        }
    }
    releaseSlowly(block, sizeClass);
}

#else

// Free lists hide a use after free from AddressSanitizer, so its builds do without them.
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
