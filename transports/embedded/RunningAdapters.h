/// The adapters whose engines run, so that a program that ends without stopping them ends well, or
/// while a listener that has stopped one is still on its way out.
#ifndef ZANENGINE_TRANSPORTS_EMBEDDED_RUNNINGADAPTERS_H
#define ZANENGINE_TRANSPORTS_EMBEDDED_RUNNINGADAPTERS_H

#include "adapter/DeliveryThread.h"
#include "adapter/IZANEngineAdapter.h"
#include "server/engine/Engine.h"

#include <chrono>
#include <mutex>
#include <set>
#include <utility>

namespace zan::embedded {

/// The sessions' library has static objects that end when the program ends, before the facade does.
/// This one comes to life after them and so ends first: it stops what still runs, and waits for the
/// engines to be gone. A listener that ends the program cannot wait for its own.
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
    // How long the end of the program waits for listeners that do not return.
    static constexpr std::chrono::seconds patience{10};

    RunningAdapters() = default;

    ~RunningAdapters() {
        for (IZANEngineAdapter* adapter : std::exchange(adapters_, {})) {
            try {
                adapter->uninitialize();
            } catch (...) {
                // There is nobody left to tell.
            }
        }
        if (!DeliveryThread::isCurrent()) {
            server::Engine::waitForAll(patience);
        }
    }

    std::mutex mutex_;
    std::set<IZANEngineAdapter*> adapters_;
};

} // namespace zan::embedded

#endif
