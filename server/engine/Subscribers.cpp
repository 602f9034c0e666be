#include "server/engine/Subscribers.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace zan::server {

void Subscribers::add(counted_ptr<IZANEventListener> const& listener, EventKinds kinds) {
    if (!listener || !kinds.any()) {
        return;
    }
    std::lock_guard const lock(mutex_);
    auto const found = std::ranges::find_if(
        subscribers_, [&](Shared const& entry) { return entry->listener == listener; });
    if (found == subscribers_.end()) {
        subscribers_.push_back(std::make_shared<Subscriber>(Subscriber{listener, kinds}));
        return;
    }
    EventKinds& known = (*found)->kinds;
    known = {known.admin || kinds.admin, known.app || kinds.app, known.state || kinds.state};
}

void Subscribers::remove(counted_ptr<IZANEventListener> const& listener, EventKinds kinds) {
    std::vector<Shared> removed;
    {
        std::lock_guard const lock(mutex_);
        auto const found = std::ranges::find_if(
            subscribers_, [&](Shared const& entry) { return entry->listener == listener; });
        if (found == subscribers_.end()) {
            return;
        }
        EventKinds& known = (*found)->kinds;
        known = {known.admin && !kinds.admin, known.app && !kinds.app, known.state && !kinds.state};
        if (!known.any()) {
            removed.push_back(std::move(*found));
            subscribers_.erase(found);
        }
    }
    release(removed);
}

void Subscribers::forEach(bool EventKinds::*kind,
                          std::function<void(IZANEventListener&)> const& deliver) {
    std::vector<Shared> selected = select(kind);
    for (Shared const& subscriber : selected) {
        deliver(*subscriber->listener);
    }
    release(selected);
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
        } else if (subscriber->listener.use_count() > 1) {
            subscriber->listener.reset();
        }
    }
}

} // namespace zan::server
