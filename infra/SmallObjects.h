/// Storage for small objects that come and go often: control blocks, fields, groups, messages.
///
/// Threads: any thread may allocate, and any thread may give a block back.
#ifndef ZANENGINE_INFRA_SMALLOBJECTS_H
#define ZANENGINE_INFRA_SMALLOBJECTS_H

#include "infra/Export.h"

#include <cstddef>

#ifdef ZAN_BUILDING_LIBRARY
#include "infra/Pool.h"
#endif

namespace zan {

#ifdef ZAN_BUILDING_LIBRARY

// Inside the library both are expanded where they are called.
[[gnu::always_inline]] inline void* allocateSmall(std::size_t size) {
    return pool::allocate(size);
}
[[gnu::always_inline]] inline void releaseSmall(void* block, std::size_t size) noexcept {
    pool::release(block, size);
}

#else

/// Throws `std::bad_alloc`. `size` is at least 1.
ZAN_API void* allocateSmall(std::size_t size);

/// `size` is the one that the block was allocated with.
ZAN_API void releaseSmall(void* block, std::size_t size) noexcept;

#endif

} // namespace zan

#endif
