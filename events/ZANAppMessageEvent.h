/// `ZANAppMessageEvent`: an application message of a connection: an order, an execution report, a
/// quote and the like. Delivered to listeners of `ZANEngineDefs::APP_EVENT_TYPE`.
///
/// Threads and ownership: as for `ZANEvent`.
#ifndef ZANENGINE_EVENTS_ZANAPPMESSAGEEVENT_H
#define ZANENGINE_EVENTS_ZANAPPMESSAGEEVENT_H

#include "events/ZANEvent.h"
#include "infra/Export.h"

#include <string>

class ZAN_API ZANAppMessageEvent : public ZANEvent {
public:
    /// Copies the name, shares the message; `isAdmin()` is false.
    ZANAppMessageEvent(std::string const& connectionName, counted_ptr<ZANMessage> message);
    ZANAppMessageEvent(char const* connectionName, counted_ptr<ZANMessage> message);
    ZANAppMessageEvent(ZANAppMessageEvent const&) = default;
    ZANAppMessageEvent& operator=(ZANAppMessageEvent const&) = default;
    ~ZANAppMessageEvent() override;
};

#endif
