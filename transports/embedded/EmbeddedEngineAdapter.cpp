#include "transports/embedded/EmbeddedEngineAdapter.h"

#include "errors/ZANEngineException.h"
#include "infra/WrongConfigurationException.h"
#include "transports/embedded/RunningAdapters.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace zan::embedded {

using server::EventKinds;
using server::MessageKind;

EmbeddedEngineAdapter::~EmbeddedEngineAdapter() {
    forget();
}

void EmbeddedEngineAdapter::initialize() {
    std::string const config = getConfigProvider().getProperty("engine.config", "");
    if (config.empty()) {
        throw WrongConfigurationException(
            "engine.config: is missing; the path of a session file, or demo, would be right");
    }
    try {
        start(config);
    } catch (InfraException const&) {
        throw;
    } catch (std::exception const& e) {
        throw ZANEngineException("embedded engine " + config + ": " + e.what());
    }
    RunningAdapters::instance().add(this);
    isRegistered_ = true;
}

// At the end of the program the register may be gone before the last adapter.
void EmbeddedEngineAdapter::forget() {
    if (std::exchange(isRegistered_, false)) {
        RunningAdapters::instance().remove(this);
    }
}

void EmbeddedEngineAdapter::start(std::string const& config) {
    auto const sink = [this](counted_ptr<ZANEvent> const& event) { report(event); };
    if (config == "demo") {
        demo_ = std::make_unique<DemoCounterparty>();
        engine_ = std::make_unique<server::Engine>(demo_->connections(), demo_->dataFolder(), sink);
        return;
    }
    std::string const data = getConfigProvider().getProperty("engine.data", config + ".data");
    engine_ = std::make_unique<server::Engine>(server::readSessionFile(config), data, sink);
}

void EmbeddedEngineAdapter::uninitialize() {
    if (engine_) {
        engine_->stop();
    }
    forget();
    engine_.reset();
    demo_.reset();
}

bool EmbeddedEngineAdapter::isThreadSafe() {
    return true;
}

ZANGMLAdapterFactory& EmbeddedEngineAdapter::getGMLAdapterFactory() {
    return guaranteedListeners_;
}

server::Engine& EmbeddedEngineAdapter::engine() const {
    if (!engine_) {
        throw ZANEngineException("the engine is not running");
    }
    return *engine_;
}

void EmbeddedEngineAdapter::report(counted_ptr<ZANEvent> const& event) {
    try {
        eventReceived(event);
    } catch (ZANEngineException const& e) {
        // Before the facade is there, and after it, nobody listens.
        if (e.getMessage() != "Proxy was not initialized!") {
            throw;
        }
    }
}

void EmbeddedEngineAdapter::connect(Ticket, Name connection,
                                    counted_ptr<ZANFieldGroup> logonFields) {
    engine().connection(connection).connect(logonFields.get());
}

void EmbeddedEngineAdapter::connect(Ticket, Name connection) {
    engine().connection(connection).connect(nullptr);
}

void EmbeddedEngineAdapter::disconnect(Ticket, Name connection, std::string const& reason) {
    engine().connection(connection).disconnect(reason);
}

bool EmbeddedEngineAdapter::pingConnection(Ticket, Name connection, long timeoutMillis) {
    long const longest = std::numeric_limits<std::int32_t>::max();
    std::chrono::milliseconds const timeout(std::clamp(timeoutMillis, 0L, longest));
    return engine().connection(connection).ping(timeout);
}

bool EmbeddedEngineAdapter::isConnected(Ticket, Name connection) {
    return engine().connection(connection).isConnected();
}

void EmbeddedEngineAdapter::getConnectionNameList(Ticket, std::vector<std::string>& names) {
    for (auto const& connection : engine().connections()) {
        names.push_back(connection->name());
    }
}

counted_ptr<ZANConnectionState> EmbeddedEngineAdapter::getConnectionState(Ticket,
                                                                          Name connection) const {
    return engine().connection(connection).state().record();
}

std::string EmbeddedEngineAdapter::getConnectionProperties(Ticket, Name connection) {
    return engine().connection(connection).properties();
}

std::int64_t EmbeddedEngineAdapter::getMillisTime(Ticket) {
    return static_cast<std::int64_t>(server::nowMillis());
}

void EmbeddedEngineAdapter::subscribeDirect(Ticket, Name connection, bool admin, bool app,
                                            bool state, Listener listener) {
    engine().connection(connection).subscribers().add(listener, EventKinds{admin, app, state});
}

void EmbeddedEngineAdapter::unsubscribeDirect(Ticket, Name connection, bool admin, bool app,
                                              bool state, Listener listener) {
    engine().connection(connection).subscribers().remove(listener, EventKinds{admin, app, state});
}

void EmbeddedEngineAdapter::destroyDirectSubscriber(Listener listener) {
    for (auto const& connection : engine().connections()) {
        connection->subscribers().remove(listener, EventKinds{true, true, true});
    }
}

long EmbeddedEngineAdapter::sendAdminMessage(Ticket, Name connection, std::string const& message) {
    return engine().connection(connection).send(MessageKind::Admin, message);
}

long EmbeddedEngineAdapter::sendAdminMessage(Ticket, Name connection, Message message) {
    return engine().connection(connection).send(MessageKind::Admin, message);
}

long EmbeddedEngineAdapter::sendMessage(Ticket, Name connection, std::string const& message) {
    return engine().connection(connection).send(MessageKind::App, message);
}

long EmbeddedEngineAdapter::sendMessage(Ticket, Name connection, Message message) {
    return engine().connection(connection).send(MessageKind::App, message);
}

} // namespace zan::embedded
