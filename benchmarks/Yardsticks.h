/// What the facade, the iterators and the dispatch are measured against: a bare virtual call and a
/// bare loop over listeners. They live in a shared object of their own, as an adapter does: a call
/// from one shared object to another takes some processors longer than one that stays at home.
#ifndef ZANENGINE_BENCHMARKS_YARDSTICKS_H
#define ZANENGINE_BENCHMARKS_YARDSTICKS_H

#include "adapter/IZANEventListener.h"
#include "events/ZANEvent.h"
#include "infra/counted_ptr.h"

#include <memory>
#include <vector>

class VirtualCallee {
public:
    VirtualCallee() = default;
    VirtualCallee(VirtualCallee const&) = delete;
    VirtualCallee& operator=(VirtualCallee const&) = delete;
    virtual ~VirtualCallee();
    virtual int answer() = 0;
};

std::unique_ptr<VirtualCallee> newVirtualCallee();

/// The same in the program itself, to show the difference.
std::unique_ptr<VirtualCallee> newVirtualCalleeAtHome();

/// What an adapter would do that delivers its events itself.
void deliver(std::vector<counted_ptr<IZANEventListener>> const& listeners,
             counted_ptr<ZANEvent> const& event);

#endif
