#include "server/engine/Subscribers.h"

#include "adapter/ListenerCounts.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace zan::server {

namespace {

EventKinds joined(EventKinds left, EventKinds right) {
    return {left.admin || right.admin, left.app || right.app, left.state || right.state};
}

EventKinds without(EventKinds left, EventKinds right) {
    return {left.admin && !right.admin, left.app && !right.app, left.state && !right.state};
}

} // namespace

Subscriber::Subscriber(counted_ptr<IZANEventListener> const& listener, EventKinds itsKinds)
    : plain(share(listener)), kinds(itsKinds) {}

Subscriber::Subscriber(counted_ptr<ZANGuaranteedEngineMessageListener> const& listener,
                       std::shared_ptr<GuaranteedStream> itsStream, EventKinds itsKinds)
    : guaranteed(share(listener)), stream(std::move(itsStream)), kinds(itsKinds) {}

Subscriber::~Subscriber() {
    letGo(plain);
    letGo(guaranteed);
}

void const* Subscriber::identity() const {
    return plain ? static_cast<void const*>(plain.get()) : guaranteed.get();
}

void Subscriber::processEvent(counted_ptr<ZANEvent> const& event) const {
    if (plain) {
        plain->processEvent(event);
    } else {
        guaranteed->processEvent(event);
    }
}

void Subscriber::processStateEvent(counted_ptr<ZANConnectionStateEvent> const& event) const {
    if (plain) {
        plain->processStateEvent(event);
    } else {
        guaranteed->processStateEvent(event);
    }
}

// The lock is held by all that call this.
Subscribers::Shared* Subscribers::find(void const* identity) {
    auto const found = std::ranges::find(subscribers_, identity,
                                         [](Shared const& entry) { return entry->identity(); });
    return found == subscribers_.end() ? nullptr : &*found;
}

void Subscribers::add(PlainListener const& listener, EventKinds kinds) {
    if (!listener || !kinds.any()) {
        return;
    }
    std::lock_guard const lock(mutex_);
    if (Shared* const known = find(listener.get())) {
        (*known)->kinds = joined((*known)->kinds, kinds);
    } else {
        subscribers_.push_back(std::make_shared<Subscriber>(listener, kinds));
    }
}

void Subscribers::add(GuaranteedListener const& listener,
                      std::shared_ptr<MessageFilter> const& filter, std::string const& name,
                      EventKinds kinds) {
    if (!listener || !kinds.any()) {
        return;
    }
    std::lock_guard const lock(mutex_);
    if (Shared* const known = find(listener.get())) {
        (*known)->kinds = joined((*known)->kinds, kinds);
    } else {
        subscribers_.push_back(std::make_shared<Subscriber>(
            listener, std::make_shared<GuaranteedStream>(name, filter), kinds));
    }
}

void Subscribers::remove(PlainListener const& listener, EventKinds kinds, Patience patience) {
    remove(static_cast<void const*>(listener.get()), kinds, patience);
}

void Subscribers::remove(GuaranteedListener const& listener, EventKinds kinds, Patience patience) {
    remove(static_cast<void const*>(listener.get()), kinds, patience);
}

// The thread that delivers may hold the entry, but not the listener, a little longer than this.
void Subscribers::remove(void const* identity, EventKinds kinds, Patience patience) {
    PlainListener plain;
    GuaranteedListener guaranteed;
    {
        std::unique_lock lock(mutex_);
        Shared* const known = find(identity);
        if (!known) {
            return;
        }
        (*known)->kinds = without((*known)->kinds, kinds);
        if ((*known)->kinds.any()) {
            return;
        }
        Shared const removed = std::move(*known);
        std::erase(subscribers_, nullptr);
        if (returned_.wait_for(lock, patience, [&] { return called_ != removed.get(); })) {
            plain = std::move(removed->plain);
            guaranteed = std::move(removed->guaranteed);
        }
        lock.unlock(); // before what is left of the entry ends
    }
    letGo(plain);
    letGo(guaranteed);
}

std::vector<Subscribers::Shared> Subscribers::takeAll() {
    std::lock_guard const lock(mutex_);
    return std::exchange(subscribers_, {});
}

std::vector<Subscribers::Shared>
Subscribers::forEach(bool EventKinds::*kind,
                     std::function<void(Subscriber const&)> const& deliver) {
    std::vector<Shared> selected;
    {
        std::lock_guard const lock(mutex_);
        std::ranges::copy_if(subscribers_, std::back_inserter(selected),
                             [&](Shared const& entry) { return entry->kinds.*kind; });
    }
    for (Shared const& subscriber : selected) {
        call(*subscriber, kind, [&] { deliver(*subscriber); });
    }
    return selected;
}

std::vector<Subscribers::Shared> Subscribers::guaranteed(MessageFilter const* filter) const {
    std::vector<Shared> selected;
    std::lock_guard const lock(mutex_);
    std::ranges::copy_if(subscribers_, std::back_inserter(selected), [&](Shared const& entry) {
        return entry->stream && (!filter || &entry->stream->filter() == filter);
    });
    return selected;
}

bool Subscribers::call(Subscriber const& subscriber, bool EventKinds::*kind,
                       std::function<void()> const& deliver) {
    if (!beginCall(subscriber, kind)) {
        return false;
    }
    struct End {
        Subscribers& subscribers;
        ~End() { subscribers.endCall(); }
    };
    End const whateverHappens{*this};
    deliver();
    return true;
}

bool Subscribers::beginCall(Subscriber const& subscriber, bool EventKinds::*kind) {
    std::lock_guard const lock(mutex_);
    if (!(subscriber.kinds.*kind)) {
        return false;
    }
    called_ = &subscriber;
    return true;
}

void Subscribers::endCall() {
    {
        std::lock_guard const lock(mutex_);
        called_ = nullptr;
    }
    returned_.notify_all();
}

bool Subscribers::hasFilter(MessageFilter const& filter) const {
    return !guaranteed(&filter).empty();
}

} // namespace zan::server
