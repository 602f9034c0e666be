/// The heap of a test program, which can refuse an allocation: the program that links
/// FailingHeap.cpp has an `operator new` of its own.
#ifndef ZANENGINE_TESTS_MESSAGE_MODEL_FAILINGHEAP_H
#define ZANENGINE_TESTS_MESSAGE_MODEL_FAILINGHEAP_H

#include <cstddef>

namespace failing_heap {

/// Refuses one allocation of this thread after `allowed` more; each of them gives up what the
/// pools of small objects hold, so that every allocation of the library counts.
void refuseAfter(std::size_t allowed);

/// Refuses nothing any more. Whether an allocation was refused.
bool stop();

/// How many blocks are taken and not given back.
long liveBlocks();

} // namespace failing_heap

#endif
