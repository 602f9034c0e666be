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

void Subscribers::remove(PlainListener const& listener, EventKinds kinds) {
    remove(static_cast<void const*>(listener.get()), kinds);
}

void Subscribers::remove(GuaranteedListener const& listener, EventKinds kinds) {
    remove(static_cast<void const*>(listener.get()), kinds);
}

void Subscribers::remove(void const* identity, EventKinds kinds) {
    std::vector<Shared> removed;
    {
        std::lock_guard const lock(mutex_);
        Shared* const known = find(identity);
        if (!known) {
            return;
        }
        (*known)->kinds = without((*known)->kinds, kinds);
        if (!(*known)->kinds.any()) {
            removed.push_back(std::move(*known));
            std::erase(subscribers_, nullptr);
        }
    }
    release(removed);
}

void Subscribers::clear() {
    static std::mutex ending;
    std::vector<Shared> ended;
    std::lock_guard const turn(ending);
    {
        std::lock_guard const lock(mutex_);
        ended.swap(subscribers_);
    }
    release(ended);
}

void Subscribers::forEach(bool EventKinds::*kind,
                          std::function<void(Subscriber const&)> const& deliver) {
    std::vector<Shared> selected = select(kind);
    for (Shared const& subscriber : selected) {
        deliver(*subscriber);
    }
    release(selected);
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

// What is still used elsewhere is let go under the lock; the rest ends with the caller's list.
void Subscribers::release(std::vector<Shared>& subscribers) {
    std::lock_guard const lock(mutex_);
    for (Shared& subscriber : subscribers) {
        if (subscriber.use_count() > 1) {
            subscriber.reset();
        } else if (subscriber->plain && subscriber->plain.use_count() > 1) {
            subscriber->plain.reset();
        } else if (subscriber->guaranteed && subscriber->guaranteed.use_count() > 1) {
            subscriber->guaranteed.reset();
        }
    }
}

} // namespace zan::server
