#include "events/ZANConnectionStateEvent.h"

ZANConnectionStateEvent::ZANConnectionStateEvent(std::string const& connectionName,
                                                 counted_ptr<ZANConnectionState> state)
    : ZANEvent(connectionName), connectionState_(state) {}

ZANConnectionStateEvent::ZANConnectionStateEvent(char const* connectionName,
                                                 counted_ptr<ZANConnectionState> state)
    : ZANEvent(connectionName), connectionState_(state) {}

ZANConnectionStateEvent::~ZANConnectionStateEvent() = default;

counted_ptr<ZANConnectionState> ZANConnectionStateEvent::getConnectionState() {
    return connectionState_;
}

void ZANConnectionStateEvent::setConnectionState(counted_ptr<ZANConnectionState> state) {
    connectionState_ = state;
}
