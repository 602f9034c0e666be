/// The listeners that are attached straight to one connection.
///
/// Threads: any. Reference counts of listeners are plain, so the copies held here are made and let
/// go under the lock of this object; a listener that ends with its last reference ends outside it.
#ifndef ZANENGINE_SERVER_ENGINE_SUBSCRIBERS_H
#define ZANENGINE_SERVER_ENGINE_SUBSCRIBERS_H

#include "adapter/IZANEventListener.h"
#include "infra/counted_ptr.h"

#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace zan::server {

/// Which kinds of events a listener gets.
struct EventKinds {
    bool admin = false;
    bool app = false;
    bool state = false;

    bool any() const { return admin || app || state; }
};

class Subscribers {
public:
    /// Adds kinds to those that the listener has; a listener that is new comes last. An empty
    /// pointer is ignored.
    void add(counted_ptr<IZANEventListener> const& listener, EventKinds kinds);

    /// Takes kinds away; a listener without any is let go. May be called by the listener itself.
    void remove(counted_ptr<IZANEventListener> const& listener, EventKinds kinds);

    /// Calls `deliver` for each listener that has the kind, in the order in which they were added
    /// and without a lock.
    void forEach(bool EventKinds::*kind, std::function<void(IZANEventListener&)> const& deliver);

private:
    struct Subscriber {
        counted_ptr<IZANEventListener> listener;
        EventKinds kinds;
    };
    using Shared = std::shared_ptr<Subscriber>;

    std::vector<Shared> select(bool EventKinds::*kind) const;
    void release(std::vector<Shared>& subscribers);

    mutable std::mutex mutex_;
    std::vector<Shared> subscribers_;
};

} // namespace zan::server

#endif
