#include "events/ZANConnectionStateEvent.h"

#include <utility>

ZANConnectionStateEvent::ZANConnectionStateEvent(std::string const& connectionName,
                                                 counted_ptr<ZANConnectionState> state)
    : ZANEvent(connectionName), connectionState_(std::move(state)) {}

ZANConnectionStateEvent::ZANConnectionStateEvent(char const* connectionName,
                                                 counted_ptr<ZANConnectionState> state)
    : ZANEvent(connectionName), connectionState_(std::move(state)) {}

ZANConnectionStateEvent::~ZANConnectionStateEvent() = default;

counted_ptr<ZANConnectionState> ZANConnectionStateEvent::getConnectionState() {
    return connectionState_;
}

void ZANConnectionStateEvent::setConnectionState(counted_ptr<ZANConnectionState> state) {
    connectionState_ = std::move(state);
}
