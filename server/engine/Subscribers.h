/// The listeners that are attached straight to one connection.
///
/// Threads: any, but for `forEach` and `clear`, which belong to the thread that delivers. Reference
/// counts of listeners are plain, so the copies held here are made and let go under the lock of
/// this object, or by the thread that removes the listener; a listener that ends with its last
/// reference ends outside the lock.
#ifndef ZANENGINE_SERVER_ENGINE_SUBSCRIBERS_H
#define ZANENGINE_SERVER_ENGINE_SUBSCRIBERS_H

#include "adapter/IZANEventListener.h"
#include "guaranteed/ZANGuaranteedEngineMessageListener.h"
#include "infra/counted_ptr.h"
#include "server/engine/MessageSieve.h"

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

/// One listener, of either sort.
struct Subscriber {
    counted_ptr<IZANEventListener> plain;
    counted_ptr<ZANGuaranteedEngineMessageListener> guaranteed;
    /// Which messages a guaranteed listener wants; null for plain ones, which get all.
    std::shared_ptr<MessageSieve> sieve;
    EventKinds kinds;

    /// The listener's object, to tell it from others.
    void const* identity() const;
    void processEvent(counted_ptr<ZANEvent> const& event) const;
    void processStateEvent(counted_ptr<ZANConnectionStateEvent> const& event) const;
};

class Subscribers {
public:
    using PlainListener = counted_ptr<IZANEventListener>;
    using GuaranteedListener = counted_ptr<ZANGuaranteedEngineMessageListener>;
    using Patience = std::chrono::milliseconds;

    /// Adds kinds to those that the listener has; a listener that is new comes last. An empty
    /// pointer is ignored.
    void add(PlainListener const& listener, EventKinds kinds);
    void add(GuaranteedListener const& listener, std::shared_ptr<MessageSieve> const& sieve,
             EventKinds kinds);

    /// Takes kinds away; a listener without any is let go before this returns. While it is being
    /// called that waits, for `patience`; then the thread that calls it lets go of it after the
    /// call. A listener may remove itself, with a patience of zero.
    void remove(PlainListener const& listener, EventKinds kinds, Patience patience);
    void remove(GuaranteedListener const& listener, EventKinds kinds, Patience patience);

    /// Lets go of all, when nothing will be delivered any more. Connections that end at the same
    /// time may share a listener.
    void clear();

    /// Calls `deliver`, which must not throw, for each listener that has the kind and is not
    /// removed meanwhile, in the order in which they were added and without a lock.
    void forEach(bool EventKinds::*kind, std::function<void(Subscriber const&)> const& deliver);

    /// Whether there is a listener with this sieve.
    bool hasSieve(MessageSieve const& sieve) const;

private:
    using Shared = std::shared_ptr<Subscriber>;

    Shared* find(void const* identity);
    void remove(void const* identity, EventKinds kinds, Patience patience);
    std::vector<Shared> select(bool EventKinds::*kind) const;
    bool beginCall(Subscriber const& subscriber);
    void endCall();

    mutable std::mutex mutex_;
    std::condition_variable returned_;
    std::vector<Shared> subscribers_;
    Subscriber const* called_ = nullptr; // the one that `forEach` is calling
};

} // namespace zan::server

#endif
