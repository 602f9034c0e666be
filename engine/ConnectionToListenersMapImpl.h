/// The registry behind `ZANEngineProxy::subscribe`.
#ifndef ZANENGINE_ENGINE_CONNECTIONTOLISTENERSMAPIMPL_H
#define ZANENGINE_ENGINE_CONNECTIONTOLISTENERSMAPIMPL_H

#include "engine/ZANEngineProxy.h"

#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

/// The listeners of one connection, in the order of subscription. A list that a dispatch has taken
/// is never changed: subscribing and unsubscribing put a changed copy in its place.
///
/// The count of a list belongs to the proxy's listeners mutex, those of the listeners in it to the
/// lock of all listeners: that is taken here where they change.
class ListenerList {
public:
    using Pointer = counted_ptr<IZANEventListener>;

    ListenerList() = default;
    ListenerList(ListenerList const& other);
    ListenerList& operator=(ListenerList const&) = delete;
    ~ListenerList();

    void add(Pointer const& listener);
    /// A listener that is not there is ignored.
    void remove(IZANEventListener const* listener);
    bool has(IZANEventListener const* listener) const;

    std::vector<Pointer> const& listeners() const { return listeners_; }
    Pointer& at(std::size_t position) { return listeners_[position]; }

private:
    std::vector<Pointer> listeners_;
};

class ConnectionToListenersMapImpl final : public ZANEngineProxy::ConnectionToListenersMap {
public:
    void addListener(std::string const& connectionName,
                     counted_ptr<IZANEventListener> listener) override;
    void removeListener(std::string const& connectionName,
                        counted_ptr<IZANEventListener> listener) override;
    counted_ptr<ZANIterator<counted_ptr<IZANEventListener>>>
    getListeners(std::string const& connectionName) override;

    /// What the two operations above do, without a copy of the pointer.
    void add(std::string const& connectionName, counted_ptr<IZANEventListener> const& listener);
    void remove(std::string const& connectionName, IZANEventListener const* listener);

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
