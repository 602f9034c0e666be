/// Counts the heap allocations of a thread, `operator new` included: the program that links
/// HeapCounter.cpp has a `malloc` of its own in front of glibc's.
#ifndef ZANENGINE_TESTS_PERFORMANCE_HEAPCOUNTER_H
#define ZANENGINE_TESTS_PERFORMANCE_HEAPCOUNTER_H

#include <cstddef>

/// How many blocks this thread has taken from the heap so far.
std::size_t heapAllocations();

/// How many blocks `work` takes from the heap on this thread.
template <class Work>
std::size_t heapAllocationsOf(Work work) {
    std::size_t const before = heapAllocations();
    work();
    return heapAllocations() - before;
}

#endif
