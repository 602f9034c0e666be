/// `/metrics` and `/healthz` of one engine, over HTTP.
///
/// A request reads the engine's figures and holds none of its locks while it writes to the network,
/// so it holds up no session.
///
/// Threads: made and ended by its owner; `serve` and `address` any.
#ifndef ZANENGINE_SERVER_METRICS_METRICSENDPOINT_H
#define ZANENGINE_SERVER_METRICS_METRICSENDPOINT_H

#include "server/engine/Engine.h"
#include "server/metrics/HttpServer.h"

#include <memory>
#include <mutex>
#include <string>

namespace zan::server {

class MetricsEndpoint {
public:
    /// Listens from here on, and answers 503 until there is an engine. Throws
    /// `WrongConfigurationException` that names `property` when the text is no address, and when
    /// nobody can listen there.
    MetricsEndpoint(std::string const& property, std::string const& address);

    /// The engine whose figures are told from now on. The endpoint holds it.
    void serve(std::shared_ptr<Engine const> engine);

    /// `host:port`, with the port that the system picked where it was to pick one.
    std::string address() const { return server_->address().toString(); }

private:
    HttpAnswer answer(std::string const& path) const;

    mutable std::mutex mutex_;
    std::shared_ptr<Engine const> engine_;
    std::unique_ptr<HttpServer> server_;
};

} // namespace zan::server

#endif
