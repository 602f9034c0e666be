/// `ZANConnectionStateEvent`: a connection's state has changed.
///
/// The facade delivers no state events, although listeners may subscribe to
/// `ZANEngineDefs::STATE_EVENT_TYPE`; they reach the listeners that an adapter serves directly.
///
/// Threads and ownership: as for `ZANEvent`; the state record is shared like a message.
#ifndef ZANENGINE_EVENTS_ZANCONNECTIONSTATEEVENT_H
#define ZANENGINE_EVENTS_ZANCONNECTIONSTATEEVENT_H

#include "events/ZANConnectionState.h"
#include "events/ZANEvent.h"
#include "infra/Export.h"
#include "infra/counted_ptr.h"

#include <string>

class ZAN_API ZANConnectionStateEvent : public ZANEvent {
public:
    /// Copies the name, shares the state. The event is not administrative and has no message.
    /// `state` may be empty as long as the event is not printed.
    ZANConnectionStateEvent(std::string const& connectionName,
                            counted_ptr<ZANConnectionState> state);
    ZANConnectionStateEvent(char const* connectionName, counted_ptr<ZANConnectionState> state);
    ZANConnectionStateEvent(ZANConnectionStateEvent const&) = default;
    ZANConnectionStateEvent& operator=(ZANConnectionStateEvent const&) = default;
    ~ZANConnectionStateEvent() override;

    /// The shared state record.
    counted_ptr<ZANConnectionState> getConnectionState();

    /// Shares another record; the old one is let go.
    void setConnectionState(counted_ptr<ZANConnectionState> state);

private:
    counted_ptr<ZANConnectionState> connectionState_;
};

#endif
