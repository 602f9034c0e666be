/// `ZANAdminMessageEvent`: an administrative (session-level) message of a connection: logon,
/// logout, heartbeat, test request, resend request, sequence reset or reject. Delivered to
/// listeners of `ZANEngineDefs::ADMIN_EVENT_TYPE`.
///
/// Threads and ownership: as for `ZANEvent`.
#ifndef ZANENGINE_EVENTS_ZANADMINMESSAGEEVENT_H
#define ZANENGINE_EVENTS_ZANADMINMESSAGEEVENT_H

#include "events/ZANEvent.h"
#include "infra/Export.h"

#include <string>

class ZAN_API ZANAdminMessageEvent : public ZANEvent {
public:
    /// Copies the name, shares the message; `isAdmin()` is true.
    ZANAdminMessageEvent(std::string const& connectionName, counted_ptr<ZANMessage> message);
    ZANAdminMessageEvent(char const* connectionName, counted_ptr<ZANMessage> message);
    ZANAdminMessageEvent(ZANAdminMessageEvent const&) = default;
    ZANAdminMessageEvent& operator=(ZANAdminMessageEvent const&) = default;
    ~ZANAdminMessageEvent() override;
};

#endif
