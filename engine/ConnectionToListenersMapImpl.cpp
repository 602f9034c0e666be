#include "engine/ConnectionToListenersMapImpl.h"

#include <algorithm>
#include <utility>

ZANEngineProxy::ConnectionToListenersMap::~ConnectionToListenersMap() = default;

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
    auto entry = lists_.find(connectionName);
    if (entry == lists_.end()) {
        counted_ptr<ListenerList> list(new ListenerList);
        entry = lists_.emplace(connectionName, std::move(list)).first;
    }
    auto const& list = *entry->second;
    if (std::find(list.begin(), list.end(), listener) == list.end()) {
        ownList(entry->second).push_back(std::move(listener));
    }
}

void ConnectionToListenersMapImpl::removeListener(std::string const& connectionName,
                                                  counted_ptr<IZANEventListener> listener) {
    auto const entry = lists_.find(connectionName);
    if (entry == lists_.end()) {
        return;
    }
    auto const position = std::find(entry->second->begin(), entry->second->end(), listener);
    if (position == entry->second->end()) {
        return;
    }
    auto const index = position - entry->second->begin();
    auto& list = ownList(entry->second);
    list.erase(list.begin() + index);
    if (list.empty()) {
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
    return listeners_ && position_ < listeners_->size();
}

void ListenerIteratorImpl::next() {
    ++position_;
}

counted_ptr<IZANEventListener>& ListenerIteratorImpl::current() {
    return (*listeners_)[position_];
}

counted_ptr<IZANEventListener> const& ListenerIteratorImpl::current() const {
    return (*listeners_)[position_];
}
