/// The adapters whose engines run, so that a program that ends without stopping them ends well.
#ifndef ZANENGINE_TRANSPORTS_EMBEDDED_RUNNINGADAPTERS_H
#define ZANENGINE_TRANSPORTS_EMBEDDED_RUNNINGADAPTERS_H

#include "adapter/IZANEngineAdapter.h"

#include <mutex>
#include <set>
#include <utility>

namespace zan::embedded {

/// The sessions' library has static objects that end when the program ends, before the facade does.
/// This one comes to life after them and so ends first: it stops what still runs.
///
/// Threads: any.
class RunningAdapters {
public:
    static RunningAdapters& instance() {
        static RunningAdapters adapters;
        return adapters;
    }

    void add(IZANEngineAdapter* adapter) {
        std::lock_guard const lock(mutex_);
        adapters_.insert(adapter);
    }

    void remove(IZANEngineAdapter* adapter) {
        std::lock_guard const lock(mutex_);
        adapters_.erase(adapter);
    }

private:
    RunningAdapters() = default;

    ~RunningAdapters() {
        for (IZANEngineAdapter* adapter : std::exchange(adapters_, {})) {
            try {
                adapter->uninitialize();
            } catch (...) {
                // A listener that ends the program cannot wait for itself.
            }
        }
    }

    std::mutex mutex_;
    std::set<IZANEngineAdapter*> adapters_;
};

} // namespace zan::embedded

#endif
