/// The heap under the pool in a program that is built with `CountingHeap.cpp` in the place of
/// `infra/PoolHeap.cpp`: it counts, and it runs out of memory when a test wants it to.
///
/// Threads: all may call these.
#ifndef ZANENGINE_TESTS_SUPPORT_COUNTINGHEAP_H
#define ZANENGINE_TESTS_SUPPORT_COUNTINGHEAP_H

#include <cstddef>

namespace heap {

/// How many blocks of this size are out.
std::size_t live(std::size_t size);

/// The next request after `requests` others throws `std::bad_alloc`, once.
void failAfter(std::size_t requests);

/// Whether it has thrown.
bool hasFailed();

} // namespace heap

#endif
