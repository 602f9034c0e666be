#include "HeapCounter.h"

#include <cerrno>

namespace {

constinit thread_local std::size_t allocations = 0;

} // namespace

std::size_t heapAllocations() {
    return allocations;
}

// glibc's own functions under the names by which a replacement reaches them. A sanitizer has a
// heap of its own, which must stay in place.
#ifndef ZAN_TEST_SANITIZED

extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);

void* malloc(std::size_t size) {
    ++allocations;
    return __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size) {
    ++allocations;
    return __libc_calloc(count, size);
}

void* realloc(void* block, std::size_t size) {
    ++allocations;
    return __libc_realloc(block, size);
}

void* aligned_alloc(std::size_t alignment, std::size_t size) {
    ++allocations;
    return __libc_memalign(alignment, size);
}

int posix_memalign(void** block, std::size_t alignment, std::size_t size) {
    ++allocations;
    *block = __libc_memalign(alignment, size);
    return *block ? 0 : ENOMEM;
}
}

#endif
