#include "events/ZANEvent.h"

#include "events/ZANConnectionStateEvent.h"

#include <ostream>
#include <utility>

ZANEvent::ZANEvent(std::string const& connectionName, counted_ptr<ZANMessage> message, bool admin)
    : admin_(admin), message_(std::move(message)), connectionName_(connectionName) {}

ZANEvent::ZANEvent(char const* connectionName, counted_ptr<ZANMessage> message, bool admin)
    : admin_(admin), message_(std::move(message)), connectionName_(connectionName) {}

ZANEvent::ZANEvent(std::string const& connectionName)
    : admin_(false), connectionName_(connectionName) {}

ZANEvent::ZANEvent(char const* connectionName) : admin_(false), connectionName_(connectionName) {}

ZANEvent::~ZANEvent() = default;

std::string const& ZANEvent::getConnectionName() const {
    return connectionName_;
}

counted_ptr<ZANMessage> ZANEvent::getMessage() const {
    return message_;
}

bool ZANEvent::isAdmin() const {
    return admin_;
}

void ZANEvent::setMessage(counted_ptr<ZANMessage> message) {
    message_ = std::move(message);
}

void ZANEvent::setConnectionName(std::string const& connectionName) {
    connectionName_ = connectionName;
}

std::ostream& operator<<(std::ostream& os, ZANEvent const& event) {
    os << "Connection name: " << event.getConnectionName();
    if (auto const* stateEvent = dynamic_cast<ZANConnectionStateEvent const*>(&event)) {
        // getConnectionState() only reads, but is not declared const.
        auto state = const_cast<ZANConnectionStateEvent*>(stateEvent)->getConnectionState();
        return os << "\nNew state is: " << *state << "\n";
    }
    return os << "\nMessage:\n" << *event.getMessage() << "\n";
}
