#include "server/engine/Subscribers.h"

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

// What is still used elsewhere is let go here, under the caller's lock; the rest ends with the
// list.
void release(std::vector<std::shared_ptr<Subscriber>>& subscribers) {
    for (std::shared_ptr<Subscriber>& subscriber : subscribers) {
        if (subscriber.use_count() > 1) {
            subscriber.reset();
        } else if (subscriber->plain && subscriber->plain.use_count() > 1) {
            subscriber->plain.reset();
        } else if (subscriber->guaranteed && subscriber->guaranteed.use_count() > 1) {
            subscriber->guaranteed.reset();
        }
    }
}

} // namespace

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
        subscribers_.push_back(
            std::make_shared<Subscriber>(Subscriber{listener, nullptr, nullptr, kinds}));
    }
}

void Subscribers::add(GuaranteedListener const& listener,
                      std::shared_ptr<MessageSieve> const& sieve, EventKinds kinds) {
    if (!listener || !kinds.any()) {
        return;
    }
    std::lock_guard const lock(mutex_);
    if (Shared* const known = find(listener.get())) {
        (*known)->kinds = joined((*known)->kinds, kinds);
    } else {
        subscribers_.push_back(
            std::make_shared<Subscriber>(Subscriber{nullptr, listener, sieve, kinds}));
    }
}

void Subscribers::remove(PlainListener const& listener, EventKinds kinds, Patience patience) {
    remove(static_cast<void const*>(listener.get()), kinds, patience);
}

void Subscribers::remove(GuaranteedListener const& listener, EventKinds kinds, Patience patience) {
    remove(static_cast<void const*>(listener.get()), kinds, patience);
}

void Subscribers::remove(void const* identity, EventKinds kinds, Patience patience) {
    Subscriber ended; // goes after the lock
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
        ended = std::exchange(*removed, {});
    }
}

void Subscribers::clear() {
    static std::mutex ending;
    std::vector<Shared> ended;
    std::lock_guard const turn(ending);
    std::lock_guard const lock(mutex_);
    ended.swap(subscribers_);
    release(ended);
}

void Subscribers::forEach(bool EventKinds::*kind,
                          std::function<void(Subscriber const&)> const& deliver) {
    std::vector<Shared> selected = select(kind);
    for (Shared const& subscriber : selected) {
        if (beginCall(*subscriber)) {
            deliver(*subscriber);
            endCall();
        }
    }
    std::lock_guard const lock(mutex_);
    release(selected);
}

bool Subscribers::beginCall(Subscriber const& subscriber) {
    std::lock_guard const lock(mutex_);
    if (!subscriber.kinds.any()) {
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

bool Subscribers::hasSieve(MessageSieve const& sieve) const {
    std::lock_guard const lock(mutex_);
    return std::ranges::any_of(subscribers_,
                               [&](Shared const& entry) { return entry->sieve.get() == &sieve; });
}

std::vector<Subscribers::Shared> Subscribers::select(bool EventKinds::*kind) const {
    std::vector<Shared> selected;
    std::lock_guard const lock(mutex_);
    std::ranges::copy_if(subscribers_, std::back_inserter(selected),
                         [&](Shared const& entry) { return entry->kinds.*kind; });
    return selected;
}

} // namespace zan::server
