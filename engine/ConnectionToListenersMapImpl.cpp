#include "engine/ConnectionToListenersMapImpl.h"

#include "adapter/ListenerCounts.h"

#include <algorithm>
#include <utility>

ZANEngineProxy::ConnectionToListenersMap::~ConnectionToListenersMap() = default;

ListenerList::ListenerList(ListenerList const& other) {
    std::lock_guard const lock(zan::listenerCounts());
    listeners_ = other.listeners_;
}

ListenerList::~ListenerList() {
    for (Pointer& listener : listeners_) {
        zan::letGo(listener);
    }
}

void ListenerList::add(Pointer const& listener) {
    listeners_.push_back(zan::share(listener));
}

void ListenerList::remove(IZANEventListener const* listener) {
    auto const position = std::ranges::find(listeners_, listener, &Pointer::get);
    if (position != listeners_.end()) {
        Pointer removed = std::move(*position);
        listeners_.erase(position);
        zan::letGo(removed);
    }
}

bool ListenerList::has(IZANEventListener const* listener) const {
    return std::ranges::find(listeners_, listener, &Pointer::get) != listeners_.end();
}

namespace {

/// The list for changing: a copy when a dispatch is using it.
ListenerList& ownList(counted_ptr<ListenerList>& list) {
    if (list.use_count() > 1) {
        list = counted_ptr<ListenerList>(new ListenerList(*list));
    }
    return *list;
}

} // namespace

void ConnectionToListenersMapImpl::addListener(std::string const& connectionName,
                                               counted_ptr<IZANEventListener> listener) {
    add(connectionName, listener);
}

void ConnectionToListenersMapImpl::add(std::string const& connectionName,
                                       counted_ptr<IZANEventListener> const& listener) {
    auto entry = lists_.find(connectionName);
    if (entry == lists_.end()) {
        counted_ptr<ListenerList> list(new ListenerList);
        entry = lists_.emplace(connectionName, std::move(list)).first;
    }
    if (!entry->second->has(listener.get())) {
        ownList(entry->second).add(listener);
    }
}

void ConnectionToListenersMapImpl::removeListener(std::string const& connectionName,
                                                  counted_ptr<IZANEventListener> listener) {
    remove(connectionName, listener.get());
}

void ConnectionToListenersMapImpl::remove(std::string const& connectionName,
                                          IZANEventListener const* listener) {
    auto const entry = lists_.find(connectionName);
    if (entry == lists_.end() || !entry->second->has(listener)) {
        return;
    }
    ListenerList& list = ownList(entry->second);
    list.remove(listener);
    if (list.listeners().empty()) {
        lists_.erase(entry);
    }
}

counted_ptr<ZANIterator<counted_ptr<IZANEventListener>>>
ConnectionToListenersMapImpl::getListeners(std::string const& connectionName) {
    return counted_ptr<ZANIterator<counted_ptr<IZANEventListener>>>(
        new ListenerIteratorImpl(shareListeners(connectionName)));
}

counted_ptr<ListenerList>
ConnectionToListenersMapImpl::shareListeners(std::string const& connectionName) const {
    auto const entry = lists_.find(connectionName);
    return entry == lists_.end() ? nullptr : entry->second;
}

ListenerIteratorImpl::ListenerIteratorImpl(counted_ptr<ListenerList> listeners)
    : listeners_(std::move(listeners)) {}

bool ListenerIteratorImpl::hasNext() const {
    return listeners_ && position_ < listeners_->listeners().size();
}

void ListenerIteratorImpl::next() {
    ++position_;
}

counted_ptr<IZANEventListener>& ListenerIteratorImpl::current() {
    return listeners_->at(position_);
}

counted_ptr<IZANEventListener> const& ListenerIteratorImpl::current() const {
    return listeners_->at(position_);
}
