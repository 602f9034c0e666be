#include "server/engine/Engine.h"

#include "errors/ZANConnectionUnknownException.h"
#include "errors/ZANEngineException.h"
#include "server/engine/EngineErrors.h"

#include <algorithm>
#include <thread>
#include <utility>

namespace zan::server {

Engine::Engine(std::vector<ConnectionSettings> connections, std::string const& dataFolder,
               EventSink const& sink)
    : folder_(dataFolder) {
    for (ConnectionSettings& settings : connections) {
        connections_.push_back(
            std::make_unique<Connection>(std::move(settings), folder_.path(), sink));
    }
}

Engine::~Engine() = default;

void Engine::stop() {
    bool const isListener = std::ranges::any_of(
        connections_, [](auto const& connection) { return connection->isDelivering(); });
    if (isListener) {
        throw ZANEngineException("a listener cannot stop the engine that is calling it");
    }
    // Each waits for its counterparty's answer: at the same time, not one after the other.
    std::vector<std::thread> stopping;
    for (auto const& connection : connections_) {
        stopping.emplace_back([&connection] { connection->stop("the engine stops"); });
    }
    for (std::thread& thread : stopping) {
        thread.join();
    }
}

Connection& Engine::connection(std::string const& name) const {
    auto const found =
        std::ranges::find(connections_, name, [](auto const& entry) { return entry->name(); });
    if (found == connections_.end()) {
        fail<ZANConnectionUnknownException>("this engine has no connection \"" + name + "\"");
    }
    return **found;
}

} // namespace zan::server
