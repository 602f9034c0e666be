/// The cheapest call that an object behind an interface can answer: the yardstick for iterators and
/// for the facade.
#ifndef ZANENGINE_BENCHMARKS_VIRTUALCALL_H
#define ZANENGINE_BENCHMARKS_VIRTUALCALL_H

#include <memory>

class VirtualCallee {
public:
    VirtualCallee() = default;
    VirtualCallee(VirtualCallee const&) = delete;
    VirtualCallee& operator=(VirtualCallee const&) = delete;
    virtual ~VirtualCallee();
    virtual int answer() = 0;
};

/// Made in another source, so that the caller's compiler cannot see which class answers.
std::unique_ptr<VirtualCallee> newVirtualCallee();

#endif
