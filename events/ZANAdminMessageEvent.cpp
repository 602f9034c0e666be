#include "events/ZANAdminMessageEvent.h"

ZANAdminMessageEvent::ZANAdminMessageEvent(std::string const& connectionName,
                                           counted_ptr<ZANMessage> message)
    : ZANEvent(connectionName, message, true) {}

ZANAdminMessageEvent::ZANAdminMessageEvent(char const* connectionName,
                                           counted_ptr<ZANMessage> message)
    : ZANEvent(connectionName, message, true) {}

ZANAdminMessageEvent::~ZANAdminMessageEvent() = default;
