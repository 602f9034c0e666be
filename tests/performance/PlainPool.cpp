// The pool of the library is not visible outside of it; the table of tags that is compiled into
// this program takes its storage from the heap.
#include "infra/Pool.h"

namespace zan::pool {

void* allocate(std::size_t size) {
    return ::operator new(size);
}

void release(void* block, std::size_t) noexcept {
    ::operator delete(block);
}

} // namespace zan::pool
