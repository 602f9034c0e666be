/// The registry behind `ZANEngineProxy::subscribe`.
#ifndef ZANENGINE_ENGINE_CONNECTIONTOLISTENERSMAPIMPL_H
#define ZANENGINE_ENGINE_CONNECTIONTOLISTENERSMAPIMPL_H

#include "engine/ZANEngineProxy.h"

#include <string>
#include <unordered_map>
#include <vector>

/// The listeners of one connection, in the order of subscription. A list that a dispatch has taken
/// is never changed: subscribing and unsubscribing put a changed copy in its place.
using ListenerList = std::vector<counted_ptr<IZANEventListener>>;

class ConnectionToListenersMapImpl final : public ZANEngineProxy::ConnectionToListenersMap {
public:
    void addListener(std::string const& connectionName,
                     counted_ptr<IZANEventListener> listener) override;
    void removeListener(std::string const& connectionName,
                        counted_ptr<IZANEventListener> listener) override;
    counted_ptr<ZANIterator<counted_ptr<IZANEventListener>>>
    getListeners(std::string const& connectionName) override;

    /// The list as it is now, shared; empty when the name has no listeners.
    counted_ptr<ListenerList> shareListeners(std::string const& connectionName) const;

private:
    std::unordered_map<std::string, counted_ptr<ListenerList>> lists_;
};

/// Walks over the listeners of one connection name.
class ListenerIteratorImpl final : public ZANIterator<counted_ptr<IZANEventListener>> {
public:
    explicit ListenerIteratorImpl(counted_ptr<ListenerList> listeners);

    bool hasNext() const override;
    void next() override;
    counted_ptr<IZANEventListener>& current() override;
    counted_ptr<IZANEventListener> const& current() const override;

private:
    counted_ptr<ListenerList> listeners_;
    std::size_t position_ = 0;
};

#endif
