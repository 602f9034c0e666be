#include "FailingHeap.h"

#include "infra/SmallObjects.h"

#include <cstdlib>
#include <new>

namespace {

constexpr std::size_t never = static_cast<std::size_t>(-1);

constinit thread_local std::size_t stillAllowed = never;
constinit thread_local bool wasRefused = false;
constinit thread_local std::size_t allocations = 0;
constinit thread_local long live = 0;

// A pool takes each of its blocks from `operator new`, so an empty one has to go there.
void emptyPools() {
    constexpr std::size_t granularity = 16;
    constexpr std::size_t largestBlock = 1024;
    for (std::size_t size = granularity; size <= largestBlock; size += granularity) {
        std::size_t before = 0;
        do {
            before = allocations;
            ::operator delete(zan::allocateSmall(size));
        } while (allocations == before);
    }
}

} // namespace

namespace failing_heap {

void refuseAfter(std::size_t count) {
    emptyPools();
    wasRefused = false;
    stillAllowed = count;
}

bool stop() {
    stillAllowed = never;
    return wasRefused;
}

long liveBlocks() {
    return live;
}

} // namespace failing_heap

void* operator new(std::size_t size) {
    ++allocations;
    if (stillAllowed != never && stillAllowed-- == 0) {
        stillAllowed = never;
        wasRefused = true;
        throw std::bad_alloc();
    }
    void* const block = std::malloc(size);
    if (!block) {
        throw std::bad_alloc();
    }
    ++live;
    return block;
}

void operator delete(void* block) noexcept {
    live -= block ? 1 : 0;
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept {
    ::operator delete(block);
}
