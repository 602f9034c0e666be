/// The lock that owns the reference counts of listeners.
///
/// Counts are plain, and one listener may be attached to several connections, to the facade and to
/// an adapter at the same time, each with threads of its own. The facade, the guaranteed listener
/// and the embedded engine therefore make and let go of their copies with the functions below; an
/// adapter that keeps listeners does the same.
///
/// Threads: any. Nothing of an application's runs under the lock: a listener that ends with its
/// last reference ends after it.
#ifndef ZANENGINE_ADAPTER_LISTENERCOUNTS_H
#define ZANENGINE_ADAPTER_LISTENERCOUNTS_H

#include "infra/Export.h"
#include "infra/counted_ptr.h"

#include <mutex>

namespace zan {

/// One for the process, as long as it lives. No other lock is taken under it.
ZAN_API std::mutex& listenerCounts();

/// A copy of `pointer`, which no other thread changes meanwhile.
template <class T>
counted_ptr<T> share(counted_ptr<T> const& pointer) {
    std::lock_guard const lock(listenerCounts());
    return pointer;
}

/// Empties `pointer`. The object ends here when nobody else holds it.
template <class T>
void letGo(counted_ptr<T>& pointer) {
    {
        std::lock_guard const lock(listenerCounts());
        if (pointer.use_count() > 1) {
            pointer.reset();
        }
    }
    pointer.reset();
}

} // namespace zan

#endif
