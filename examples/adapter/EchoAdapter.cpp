#include "EchoAdapter.h"

#include "EchoMessages.h"
#include "errors/ZANUtilityFunctions.h"
#include "events/ZANAppMessageEvent.h"

#include <sstream>
#include <utility>

namespace {

char const* const connectionUnknown = "kestrow.moravane.engine.ZANConnectionUnknownException";
char const* const notConnected = "kestrow.moravane.engine.ZANNotConnectedException";

/// The error names of the engine become exception classes of the library.
[[noreturn]] void fail(char const* type, std::string const& text) {
    ZANUtilityFunctions::throwConcreteRemoteException(type, text);
}

} // namespace

EchoAdapter::EchoAdapter(counted_ptr<IZANEngineConfigProvider> provider)
    : UnsupportedOperations(provider),
      delivery_([this](counted_ptr<ZANEvent> event) { eventReceived(event); }) {
    std::istringstream names(provider->getProperty("connections", "ECHO"));
    for (std::string name; std::getline(names, name, ',');) {
        connections_.emplace(name, Connection{ZANConnectionState(FLAG_DISCONNECTED), 0});
    }
}

void EchoAdapter::initialize() {
    delivery_.start();
}

void EchoAdapter::uninitialize() {
    delivery_.stop();
}

bool EchoAdapter::isThreadSafe() {
    return false;
}

ZANGMLAdapterFactory& EchoAdapter::getGMLAdapterFactory() {
    return guaranteedListeners_;
}

void EchoAdapter::connect(UserTicket const& ticket, Name const& name, counted_ptr<ZANFieldGroup>) {
    connect(ticket, name);
}

void EchoAdapter::connect(UserTicket const&, Name const& name) {
    ZANConnectionState& state = find(name).state;
    state.leaveState(FLAG_DISCONNECTED);
    state.enterState(FLAG_LINK_ACTIVE | FLAG_SESSION_ACTIVE);
}

void EchoAdapter::disconnect(UserTicket const&, Name const& name, Text const&) {
    ZANConnectionState& state = find(name).state;
    state.leaveState(FLAG_LINK_ACTIVE | FLAG_SESSION_ACTIVE);
    state.enterState(FLAG_DISCONNECTED);
}

bool EchoAdapter::isConnected(UserTicket const&, Name const& name) {
    return find(name).state.isSessionActive();
}

void EchoAdapter::getConnectionNameList(UserTicket const&, std::vector<std::string>& names) {
    for (auto const& [name, connection] : connections_) {
        names.push_back(name);
    }
}

counted_ptr<ZANConnectionState> EchoAdapter::getConnectionState(UserTicket const&,
                                                                Name const& name) const {
    return counted_ptr<ZANConnectionState>(new ZANConnectionState(find(name).state));
}

// The caller may go on to change or release its message while the event waits, so the event gets
// a deep copy.
long EchoAdapter::sendMessage(UserTicket const&, Name const& name,
                              counted_ptr<ZANMessage> message) {
    return echo(name, copyOfBody(message));
}

long EchoAdapter::sendMessage(UserTicket const&, Name const& name, Text const& message) {
    return echo(name, readBody(message));
}

long EchoAdapter::echo(Name const& name, counted_ptr<ZANFieldGroup> body) {
    Connection& connection = find(name);
    if (!connection.state.isSessionActive()) {
        fail(notConnected, "connection " + name + " is not connected");
    }
    long const id = ++connection.lastMessageId;
    body->setFieldValue(16580, id);
    body->setFieldValue(16577, static_cast<double>(infra::Time::now().getMillis()));
    counted_ptr<ZANMessage> message(new ZANMessage(std::move(body)));
    // A statement of its own: what it lets go of is let go before the event is handed over.
    counted_ptr<ZANEvent> event(new ZANAppMessageEvent(name, std::move(message)));
    delivery_.post(std::move(event));
    return id;
}

std::int64_t EchoAdapter::getMillisTime(UserTicket const&) {
    return infra::Time::now().getMillis();
}

EchoAdapter::Connection& EchoAdapter::find(Name const& name) {
    return const_cast<Connection&>(std::as_const(*this).find(name));
}

EchoAdapter::Connection const& EchoAdapter::find(Name const& name) const {
    auto const found = connections_.find(name);
    if (found == connections_.end()) {
        fail(connectionUnknown, "there is no connection " + name);
    }
    return found->second;
}
