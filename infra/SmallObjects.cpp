#include "infra/Pool.h"

// What callers outside the library see: functions. Inside the same names are inline.
#undef ZAN_BUILDING_LIBRARY
#include "infra/SmallObjects.h"

namespace zan {

void* allocateSmall(std::size_t size) {
    return pool::allocate(size);
}

void releaseSmall(void* block, std::size_t size) noexcept {
    pool::release(block, size);
}

} // namespace zan
