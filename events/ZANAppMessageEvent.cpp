#include "events/ZANAppMessageEvent.h"

ZANAppMessageEvent::ZANAppMessageEvent(std::string const& connectionName,
                                       counted_ptr<ZANMessage> message)
    : ZANEvent(connectionName, message, false) {}

ZANAppMessageEvent::ZANAppMessageEvent(char const* connectionName, counted_ptr<ZANMessage> message)
    : ZANEvent(connectionName, message, false) {}

ZANAppMessageEvent::~ZANAppMessageEvent() = default;
