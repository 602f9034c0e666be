#include "events/ZANAppMessageEvent.h"

#include <utility>

ZANAppMessageEvent::ZANAppMessageEvent(std::string const& connectionName,
                                       counted_ptr<ZANMessage> message)
    : ZANEvent(connectionName, std::move(message), false) {}

ZANAppMessageEvent::ZANAppMessageEvent(char const* connectionName, counted_ptr<ZANMessage> message)
    : ZANEvent(connectionName, std::move(message), false) {}

ZANAppMessageEvent::~ZANAppMessageEvent() = default;
