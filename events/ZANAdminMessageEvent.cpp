#include "events/ZANAdminMessageEvent.h"

#include <utility>

ZANAdminMessageEvent::ZANAdminMessageEvent(std::string const& connectionName,
                                           counted_ptr<ZANMessage> message)
    : ZANEvent(connectionName, std::move(message), true) {}

ZANAdminMessageEvent::ZANAdminMessageEvent(char const* connectionName,
                                           counted_ptr<ZANMessage> message)
    : ZANEvent(connectionName, std::move(message), true) {}

ZANAdminMessageEvent::~ZANAdminMessageEvent() = default;
