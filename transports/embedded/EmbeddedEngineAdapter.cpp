#include "transports/embedded/EmbeddedEngineAdapter.h"

#include "errors/ZANEngineException.h"
#include "infra/Time.h"
#include "infra/WrongConfigurationException.h"
#include "transports/embedded/RunningAdapters.h"

#include <algorithm>
#include <filesystem>
#include <limits>
#include <system_error>
#include <utility>

namespace zan::embedded {

using server::EventKinds;
using server::MessageKind;

EmbeddedEngineAdapter::~EmbeddedEngineAdapter() {
    uninitialize();
}

void EmbeddedEngineAdapter::initialize() {
    std::string const config = getConfigProvider().getProperty("engine.config", "");
    if (config.empty()) {
        throw WrongConfigurationException(
            "engine.config: is missing; the path of a session file, or demo, would be right");
    }
    std::unique_ptr<server::MetricsEndpoint> metrics = openMetrics();
    std::shared_ptr<server::Engine> engine;
    try {
        engine = start(config);
    } catch (InfraException const&) {
        throw;
    } catch (std::exception const& e) {
        throw ZANEngineException("embedded engine " + config + ": " + e.what());
    }
    guaranteedListeners_.serve(engine, getConfigProvider().getProperty("engine.client", ""));
    if (metrics) {
        metrics->serve(engine);
        engine->diagnostics().tell(DiagnosticLevel::Info, "metrics", [&] {
            return "http://" + metrics->address() + "/metrics and /healthz are served";
        });
    }
    {
        std::lock_guard const lock(engineMutex_);
        engine_ = std::move(engine);
        metrics_ = std::move(metrics);
    }
    RunningAdapters::instance().add(this);
    isRegistered_ = true;
}

std::unique_ptr<server::MetricsEndpoint> EmbeddedEngineAdapter::openMetrics() const {
    std::string const property = "engine.metrics";
    std::string const address = getConfigProvider().getProperty(property, "");
    return address.empty() ? nullptr : std::make_unique<server::MetricsEndpoint>(property, address);
}

// At the end of the program the register may be gone before the last adapter.
void EmbeddedEngineAdapter::forget() {
    if (std::exchange(isRegistered_, false)) {
        RunningAdapters::instance().remove(this);
    }
}

std::shared_ptr<server::Engine> EmbeddedEngineAdapter::start(std::string const& config) {
    auto const sink = [this](counted_ptr<ZANEvent> const& event) { report(event); };
    if (config == "demo") {
        demo_ = std::make_unique<DemoCounterparty>();
        return server::Engine::make(demo_->connections(), demo_->dataFolder(), sink);
    }
    std::vector<server::ConnectionSettings> connections = server::readSessionFile(config);
    if (!isAllowed("engine.connect")) {
        for (server::ConnectionSettings& each : connections) {
            std::erase_if(each.keys, [](auto const& key) { return key.first == "ConnectAtStart"; });
        }
    }
    return server::Engine::make(connections, dataFolder(config), sink);
}

bool EmbeddedEngineAdapter::isAllowed(std::string const& property) const {
    std::string const value = getConfigProvider().getProperty(property, "yes");
    if (value != "yes" && value != "no") {
        throw WrongConfigurationException(property + "=" + value + ": yes or no would be right");
    }
    return value == "yes";
}

std::string EmbeddedEngineAdapter::dataFolder(std::string const& config) {
    std::string folder = getConfigProvider().getProperty("engine.data", config + ".data");
    std::error_code unknown;
    if (isAllowed("engine.create") || std::filesystem::exists(folder, unknown) || unknown) {
        return folder;
    }
    return nothing_.emplace().path();
}

void EmbeddedEngineAdapter::uninitialize() {
    std::shared_ptr<server::Engine> engine;
    std::unique_ptr<server::MetricsEndpoint> metrics;
    {
        std::lock_guard const lock(engineMutex_);
        engine = std::exchange(engine_, nullptr);
        metrics = std::move(metrics_);
    }
    if (!engine) {
        return;
    }
    forget();
    metrics.reset();
    engine->stop();
    engine.reset();
    demo_.reset();
    nothing_.reset();
}

bool EmbeddedEngineAdapter::isThreadSafe() {
    return true;
}

ZANGMLAdapterFactory& EmbeddedEngineAdapter::getGMLAdapterFactory() {
    return guaranteedListeners_;
}

std::shared_ptr<server::Engine> EmbeddedEngineAdapter::engine() const {
    std::lock_guard const lock(engineMutex_);
    if (!engine_) {
        throw ZANEngineException("the engine is not running");
    }
    return engine_;
}

EmbeddedEngineAdapter::ConnectionInUse EmbeddedEngineAdapter::at(Name connection) const {
    std::shared_ptr<server::Engine> running = engine();
    server::Connection* const found = &running->connection(connection);
    return {std::move(running), found};
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

void EmbeddedEngineAdapter::connect(Ticket ticket, Name connection,
                                    counted_ptr<ZANFieldGroup> logonFields) {
    at(connection)->connect(logonFields.get(), ticket.getUser());
}

void EmbeddedEngineAdapter::connect(Ticket ticket, Name connection) {
    at(connection)->connect(nullptr, ticket.getUser());
}

void EmbeddedEngineAdapter::disconnect(Ticket, Name connection, std::string const& reason) {
    at(connection)->disconnect(reason);
}

bool EmbeddedEngineAdapter::pingConnection(Ticket, Name connection, long timeoutMillis) {
    long const longest = std::numeric_limits<std::int32_t>::max();
    std::chrono::milliseconds const timeout(std::clamp(timeoutMillis, 0L, longest));
    return at(connection)->ping(timeout);
}

bool EmbeddedEngineAdapter::isConnected(Ticket, Name connection) {
    return at(connection)->isConnected();
}

void EmbeddedEngineAdapter::getConnectionNameList(Ticket, std::vector<std::string>& names) {
    std::shared_ptr<server::Engine> const running = engine();
    for (auto const& connection : running->connections()) {
        names.push_back(connection->name());
    }
}

counted_ptr<ZANConnectionState> EmbeddedEngineAdapter::getConnectionState(Ticket,
                                                                          Name connection) const {
    return at(connection)->state().record();
}

std::string EmbeddedEngineAdapter::getConnectionProperties(Ticket, Name connection) {
    std::string const properties = at(connection)->properties();
    std::lock_guard const lock(engineMutex_);
    return metrics_ ? properties + "Metrics=" + metrics_->address() + "\n" : properties;
}

std::int64_t EmbeddedEngineAdapter::getMillisTime(Ticket) {
    return infra::Time::now().getMillis();
}

void EmbeddedEngineAdapter::subscribeDirect(Ticket, Name connection, bool admin, bool app,
                                            bool state, Listener listener) {
    at(connection)->subscribers().add(listener, EventKinds{admin, app, state});
}

void EmbeddedEngineAdapter::unsubscribeDirect(Ticket, Name connection, bool admin, bool app,
                                              bool state, Listener listener) {
    ConnectionInUse const from = at(connection);
    from->subscribers().remove(listener, EventKinds{admin, app, state},
                               from.engine->patienceWithListener());
}

void EmbeddedEngineAdapter::destroyDirectSubscriber(Listener listener) {
    std::shared_ptr<server::Engine> const running = engine();
    for (auto const& connection : running->connections()) {
        connection->subscribers().remove(listener, EventKinds{true, true, true},
                                         running->patienceWithListener());
    }
}

long EmbeddedEngineAdapter::sendAdminMessage(Ticket, Name connection, std::string const& message) {
    return at(connection)->send(MessageKind::Admin, message);
}

long EmbeddedEngineAdapter::sendAdminMessage(Ticket, Name connection, Message message) {
    return at(connection)->send(MessageKind::Admin, message);
}

long EmbeddedEngineAdapter::sendMessage(Ticket, Name connection, std::string const& message) {
    return at(connection)->send(MessageKind::App, message);
}

long EmbeddedEngineAdapter::sendMessage(Ticket, Name connection, Message message) {
    return at(connection)->send(MessageKind::App, message);
}

} // namespace zan::embedded
