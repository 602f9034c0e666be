/// Storage for the small objects that messages are made of.
///
/// Each thread keeps free blocks of its own, in one magazine for every block size, and takes from
/// it and gives to it without a lock. Full magazines go to a depot that all threads share and are
/// taken from there by a thread that runs short, so a message may be built in one thread and freed
/// in another. What exceeds the depot, and what a thread keeps when it ends, is not held for ever.
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
};

/// Null until the thread's first allocation and after the thread's end. One word, because the
/// static thread-local space that a dynamically loaded library may claim is small.
extern constinit thread_local ThreadCache* threadCache __attribute__((tls_model("initial-exec")));

void* allocateSlowly(std::size_t sizeClass);
void releaseSlowly(void* block, std::size_t sizeClass) noexcept;

/// Throws `std::bad_alloc`. `size` is at least 1.
[[gnu::always_inline]] inline void* allocate(std::size_t size) {
    if (size > largestBlock) [[unlikely]] {
        return ::operator new(size);
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

/// `size` is the one that the block was allocated with.
[[gnu::always_inline]] inline void release(void* block, std::size_t size) noexcept {
    if (size > largestBlock) [[unlikely]] {
        ::operator delete(block);
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

// Free lists hide a use after free from a sanitizer, so its builds do without them.
void* allocate(std::size_t size);
void release(void* block, std::size_t size) noexcept;

#endif

/// Blocks of one size for objects that are made one after the other. Not more blocks of that size
/// may be given back meanwhile than were taken.
class Batch {
public:
    /// Takes as many free blocks at once as are wanted and at hand.
    Batch(std::size_t size, std::size_t wanted) : size_(size) {
#ifdef ZAN_POOLS
        if (ThreadCache* cache = threadCache) [[likely]] {
            FreeList& list = cache->lists[sizeClassOf(size)];
            left_ = wanted < list.count ? wanted : list.count;
            list.count -= static_cast<unsigned>(left_);
            next_ = list.blocks + list.count;
        }
#else
        static_cast<void>(wanted);
#endif
    }
    Batch(Batch const&) = delete;
    Batch& operator=(Batch const&) = delete;
    ~Batch() {
        while (left_ > 0) {
            release(take(), size_);
        }
    }

    /// Throws `std::bad_alloc`.
    [[gnu::always_inline]] void* take() {
        if (left_ == 0) {
            return allocate(size_);
        }
        --left_;
        return *next_++;
    }

private:
    std::size_t size_;
    std::size_t left_ = 0;
    void* const* next_ = nullptr;
};

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
