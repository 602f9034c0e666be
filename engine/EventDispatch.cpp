// The registry of listeners and the delivery of events to them.
#include "adapter/DeliveryThread.h"
#include "engine/ConnectionToListenersMapImpl.h"
#include "engine/ScopedGuard.h"
#include "engine/ZANEngineProxy.h"
#include "errors/ZANEngineException.h"
#include "errors/ZANInvalidConfigPropertiesException.h"
#include "events/ZANAdminMessageEvent.h"
#include "events/ZANAppMessageEvent.h"
#include "events/ZANConnectionStateEvent.h"
#include "events/ZANEngineDefs.h"

#include <cxxabi.h>

#include <cstdlib>
#include <iostream>
#include <memory>
#include <typeinfo>
#include <utility>

namespace {

enum class EventKind { app, admin, state, unknown };

EventKind kindOf(ZANEvent const& event) {
    // The exact classes first: a dynamic_cast that fails takes longer than a whole delivery.
    auto const* const type = &typeid(event);
    if (type == &typeid(ZANAppMessageEvent)) {
        return EventKind::app;
    }
    if (type == &typeid(ZANAdminMessageEvent)) {
        return EventKind::admin;
    }
    if (dynamic_cast<ZANAppMessageEvent const*>(&event)) {
        return EventKind::app;
    }
    if (dynamic_cast<ZANAdminMessageEvent const*>(&event)) {
        return EventKind::admin;
    }
    if (dynamic_cast<ZANConnectionStateEvent const*>(&event)) {
        return EventKind::state;
    }
    return EventKind::unknown;
}

std::string classNameOf(ZANEvent const& event) {
    char const* const name = typeid(event).name();
    int status = 0;
    std::unique_ptr<char, decltype(&std::free)> const readable(
        abi::__cxa_demangle(name, nullptr, nullptr, &status), &std::free);
    return status == 0 ? readable.get() : name;
}

} // namespace

// The listeners of one event, held for the length of the delivery. Meanwhile the proxy that
// delivers is not ended: one that was told to end waits for its last delivery. The count of the
// list, and how many deliveries there are, change only under the listeners mutex, because other
// threads deliver to the same listeners; what ends with the delivery ends after the mutex is given
// back.
class ZANEngineProxy::Dispatch {
public:
    Dispatch(ZANEngineProxy& proxy, counted_ptr<ConnectionToListenersMap> const& map,
             std::string const& connectionName)
        : proxy_(proxy), hasMap_(map) {
        ScopedGuard const guard(proxy_.ListenersMutex_);
        if (hasMap_) {
            // The proxy makes all its maps itself, in its constructor.
            listeners_ =
                static_cast<ConnectionToListenersMapImpl&>(*map).shareListeners(connectionName);
        }
        ++proxy_.dispatches_;
    }

    Dispatch(Dispatch const&) = delete;
    Dispatch& operator=(Dispatch const&) = delete;

    ~Dispatch() {
        counted_ptr<ZANEngineProxy> ended;
        {
            ScopedGuard const guard(proxy_.ListenersMutex_);
            if (--proxy_.dispatches_ == 0) {
                ended = proxy_.takeEnding();
            }
            if (listeners_.use_count() > 1) {
                listeners_.reset();
            }
        }
        if (ended) {
            end(ended);
        }
    }

    [[nodiscard]] bool hasMap() const { return hasMap_; }

    void deliver(counted_ptr<ZANEvent> const& event) const {
        if (!listeners_) {
            return;
        }
        for (auto const& listener : listeners_->listeners()) {
            if (listener) {
                listener->processEvent(event);
            }
        }
    }

private:
    struct Listeners {
        counted_ptr<ListenerList> called;
        counted_ptr<ConnectionToListenersMap> app;
        counted_ptr<ConnectionToListenersMap> admin;
        counted_ptr<ConnectionToListenersMap> state;
    };

    // All its listeners end after the proxy, and after what the adapter's thread still has to end:
    // who sees one end may start a new proxy.
    void end(counted_ptr<ZANEngineProxy>& ended) {
        auto last = std::make_shared<Listeners>();
        last->called = std::move(listeners_);
        last->app = std::move(proxy_.AppListeners_);
        last->admin = std::move(proxy_.AdminListeners_);
        last->state = std::move(proxy_.StateListeners_);
        ended.reset();
        zan::DeliveryThread::keep(std::move(last));
    }

    ZANEngineProxy& proxy_;
    bool const hasMap_;
    counted_ptr<ListenerList> listeners_;
};

bool ZANEngineProxy::selectListenersMap(counted_ptr<ConnectionToListenersMap>& map,
                                        std::string const& eventType) {
    counted_ptr<ConnectionToListenersMap> const* selected = nullptr;
    if (eventType == ZANEngineDefs::APP_EVENT_TYPE) {
        selected = &AppListeners_;
    } else if (eventType == ZANEngineDefs::ADMIN_EVENT_TYPE) {
        selected = &AdminListeners_;
    } else if (eventType == ZANEngineDefs::STATE_EVENT_TYPE) {
        selected = &StateListeners_;
    } else {
        return false;
    }
    map = *selected;
    return static_cast<bool>(map);
}

void ZANEngineProxy::subscribe(UserTicket const&, counted_ptr<IZANEventListener>& listener,
                               std::string const& connectionName, std::string const& eventType) {
    ScopedGuard const guard(ListenersMutex_);
    counted_ptr<ConnectionToListenersMap> map;
    if (!selectListenersMap(map, eventType)) {
        throw ZANInvalidConfigPropertiesException("Attempt to subscribe to unknown event type: " +
                                                  eventType);
    }
    static_cast<ConnectionToListenersMapImpl&>(*map).add(connectionName, listener);
}

void ZANEngineProxy::unsubscribe(UserTicket const&, counted_ptr<IZANEventListener>& listener,
                                 std::string const& connectionName, std::string const& eventType) {
    ScopedGuard const guard(ListenersMutex_);
    counted_ptr<ConnectionToListenersMap> map;
    if (!selectListenersMap(map, eventType)) {
        throw ZANInvalidConfigPropertiesException(
            "Attempt to unsubscribe from unknown event type: " + eventType);
    }
    static_cast<ConnectionToListenersMapImpl&>(*map).remove(connectionName, listener.get());
}

void ZANEngineProxy::notifyListeners(counted_ptr<ZANEvent> event) {
    if (!event) {
        throw ZANEngineException("An adapter reported an event without an object.");
    }
    EventKind const kind = kindOf(*event);
    // State events are for direct subscribers only, also when listeners are subscribed here.
    if (kind == EventKind::state) {
        return;
    }
    if (kind != EventKind::unknown) {
        Dispatch const dispatch(*this, kind == EventKind::app ? AppListeners_ : AdminListeners_,
                                event->getConnectionName());
        if (dispatch.hasMap()) {
            dispatch.deliver(event);
            return;
        }
    }
    std::cout << "Received event of unknown type: " << classNameOf(*event) << std::endl;
}
