#include "infra/PoolHeap.h"

#include <new>

namespace zan::pool {

void* takeFromHeap(std::size_t size) {
    return ::operator new(size);
}

void returnToHeap(void* block) noexcept {
    ::operator delete(block);
}

} // namespace zan::pool
