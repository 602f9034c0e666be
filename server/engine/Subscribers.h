/// The listeners that are attached straight to one connection.
///
/// Threads: any, but for `forEach` and `call`, which belong to the thread that delivers. Reference
/// counts of listeners change only under the lock of all listeners, because one of them may be
/// attached to several connections; one that ends with its last reference ends outside of all
/// locks.
#ifndef ZANENGINE_SERVER_ENGINE_SUBSCRIBERS_H
#define ZANENGINE_SERVER_ENGINE_SUBSCRIBERS_H

#include "adapter/IZANEventListener.h"
#include "guaranteed/ZANGuaranteedEngineMessageListener.h"
#include "infra/counted_ptr.h"
#include "server/engine/GuaranteedStream.h"
#include "server/engine/MessageFilter.h"

#include <chrono>
#include <condition_variable>
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

/// One listener, of either sort. It lets go of it when it ends.
struct Subscriber {
    Subscriber(counted_ptr<IZANEventListener> const& listener, EventKinds itsKinds);
    Subscriber(counted_ptr<ZANGuaranteedEngineMessageListener> const& listener,
               std::shared_ptr<GuaranteedStream> itsStream, EventKinds itsKinds);
    Subscriber(Subscriber const&) = delete;
    Subscriber& operator=(Subscriber const&) = delete;
    ~Subscriber();

    /// The listener's object, to tell it from others.
    void const* identity() const;
    void processEvent(counted_ptr<ZANEvent> const& event) const;
    void processStateEvent(counted_ptr<ZANConnectionStateEvent> const& event) const;

    counted_ptr<IZANEventListener> plain;
    counted_ptr<ZANGuaranteedEngineMessageListener> guaranteed;
    /// How a guaranteed listener stands; null for plain ones.
    std::shared_ptr<GuaranteedStream> const stream;
    EventKinds kinds;
};

class Subscribers {
public:
    using PlainListener = counted_ptr<IZANEventListener>;
    using GuaranteedListener = counted_ptr<ZANGuaranteedEngineMessageListener>;
    using Patience = std::chrono::milliseconds;
    using Shared = std::shared_ptr<Subscriber>;

    /// Adds kinds to those that the listener has; a listener that is new comes last. An empty
    /// pointer is ignored.
    void add(PlainListener const& listener, EventKinds kinds);
    /// The marks are kept under `name`.
    void add(GuaranteedListener const& listener, std::shared_ptr<MessageFilter> const& filter,
             std::string const& name, EventKinds kinds);

    /// Takes kinds away; a listener without any is let go before this returns. While it is being
    /// called that waits, for `patience`; then the thread that calls it lets go of it after the
    /// call. A listener may remove itself, with a patience of zero.
    void remove(PlainListener const& listener, EventKinds kinds, Patience patience);
    void remove(GuaranteedListener const& listener, EventKinds kinds, Patience patience);

    /// All of them, for whoever lets go of them, when nothing will be delivered any more.
    std::vector<Shared> takeAll();

    /// Calls `deliver` for each listener that has the kind and is not
    /// removed meanwhile, in the order in which they were added and without a lock. What comes back
    /// may hold the last references of listeners that were removed meanwhile.
    std::vector<Shared> forEach(bool EventKinds::*kind,
                                std::function<void(Subscriber const&)> const& deliver);

    /// The guaranteed ones, in the order in which they were added; with a filter those that have
    /// it.
    std::vector<Shared> guaranteed(MessageFilter const* filter = nullptr) const;

    /// Calls `deliver` without a lock; false, and it is not called, when the
    /// listener was removed or does not have the kind.
    bool call(Subscriber const& subscriber, bool EventKinds::*kind,
              std::function<void()> const& deliver);

    /// Calls `visit` for the stream of each guaranteed listener, under the lock of this object and
    /// without taking memory.
    template <class Visit>
    void visitStreams(Visit const& visit) const {
        std::lock_guard const lock(mutex_);
        for (Shared const& subscriber : subscribers_) {
            if (subscriber->stream) {
                visit(*subscriber->stream);
            }
        }
    }

    /// Whether there is a listener with this filter.
    bool hasFilter(MessageFilter const& filter) const;

private:
    Shared* find(void const* identity);
    void remove(void const* identity, EventKinds kinds, Patience patience);
    bool beginCall(Subscriber const& subscriber, bool EventKinds::*kind);
    void endCall();

    mutable std::mutex mutex_;
    std::condition_variable returned_;
    std::vector<Shared> subscribers_;
    Subscriber const* called_ = nullptr; // the one that is being called
};

} // namespace zan::server

#endif
