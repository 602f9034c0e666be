#include "support/CountingHeap.h"

#include "infra/PoolHeap.h"

#include <atomic>
#include <cstddef>
#include <limits>
#include <new>

namespace {

constexpr std::size_t largestCounted = 4096;
constexpr std::size_t never = std::numeric_limits<std::size_t>::max();

std::atomic<std::size_t> untilFailure = never;
std::atomic<std::size_t> liveOfSize[largestCounted + 1];

/// Before each block; keeps the block's alignment.
struct alignas(std::max_align_t) Header {
    std::size_t size;
};

bool isToFail() {
    return untilFailure != never && untilFailure-- == 0;
}

} // namespace

std::size_t heap::live(std::size_t size) {
    return liveOfSize[size];
}

void heap::failAfter(std::size_t requests) {
    untilFailure = requests;
}

bool heap::hasFailed() {
    return untilFailure == never;
}

void* zan::pool::takeFromHeap(std::size_t size) {
    if (isToFail()) {
        throw std::bad_alloc();
    }
    auto* const header = static_cast<Header*>(::operator new(sizeof(Header) + size));
    header->size = size;
    if (size <= largestCounted) {
        ++liveOfSize[size];
    }
    return header + 1;
}

void zan::pool::returnToHeap(void* block) noexcept {
    Header* const header = static_cast<Header*>(block) - 1;
    if (header->size <= largestCounted) {
        --liveOfSize[header->size];
    }
    ::operator delete(header);
}
