/// Where the pool's memory comes from: functions of their own, so that a test can put a heap in
/// their place that counts and fails.
///
/// Threads: any thread may call them.
#ifndef ZANENGINE_INFRA_POOLHEAP_H
#define ZANENGINE_INFRA_POOLHEAP_H

#include <cstddef>

namespace zan::pool {

/// Throws `std::bad_alloc`.
void* takeFromHeap(std::size_t size);

void returnToHeap(void* block) noexcept;

} // namespace zan::pool

#endif
