/// `IZANEventListener`: receives the events of the connections that an application subscribed to.
///
/// Threads: events arrive on threads of the adapter, from several of them at the same time when the
/// listener is subscribed to more than one connection. No lock of the library is held meanwhile, so
/// a listener may call the facade, subscribe and unsubscribe from inside its operations.
#ifndef ZANENGINE_ADAPTER_IZANEVENTLISTENER_H
#define ZANENGINE_ADAPTER_IZANEVENTLISTENER_H

#include "events/ZANConnectionStateEvent.h"
#include "events/ZANEvent.h"
#include "infra/Export.h"
#include "infra/counted_ptr.h"

class ZAN_API IZANEventListener {
public:
    IZANEventListener() = default;
    IZANEventListener(IZANEventListener const&) = default;
    IZANEventListener& operator=(IZANEventListener const&) = default;

    /// Runs on whatever thread lets go of the listener last, never under a lock of the library.
    virtual ~IZANEventListener();

    /// Takes one admin or application message event. The event may be kept as long as its
    /// `counted_ptr` is used by one thread at a time. An exception ends the dispatch of this event:
    /// later listeners do not get it, and the exception reaches the adapter.
    virtual void processEvent(counted_ptr<ZANEvent> event) = 0;

    /// Takes a change of a connection's state. Only adapters call it, for listeners that were
    /// attached with `subscribeDirect`; the facade's own dispatch never does. The default ignores
    /// the event.
    virtual void processStateEvent(counted_ptr<ZANConnectionStateEvent> event);
};

#endif
