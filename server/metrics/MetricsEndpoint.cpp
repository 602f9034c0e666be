#include "server/metrics/MetricsEndpoint.h"

#include "infra/WrongConfigurationException.h"
#include "server/engine/EngineErrors.h"
#include "server/metrics/MetricsText.h"
#include "server/wire/Secrets.h"

#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace zan::server {

namespace {

constexpr int unavailable = 503;

EngineFigures figuresOf(Engine const& engine) {
    EngineFigures figures;
    for (auto const& connection : engine.connections()) {
        figures.connections.push_back(connection->figures());
    }
    figures.ailments = engine.ailments().size();
    std::error_code gone;
    figures.freeBytes = std::filesystem::space(engine.dataFolder(), gone).available;
    if (gone) {
        figures.freeBytes = 0;
    }
    return figures;
}

// A reason may quote what a counterparty sent.
HttpAnswer healthOf(Engine const& engine) {
    HttpAnswer answer;
    for (std::string const& ailment : engine.ailments()) {
        answer.status = unavailable;
        answer.text += onOneLine(maskSecrets(ailment)) + "\n";
    }
    if (answer.text.empty()) {
        answer.text = "ok\n";
    }
    return answer;
}

} // namespace

MetricsEndpoint::MetricsEndpoint(std::string const& property, std::string const& address) {
    ListenAddress const wanted = parseListenAddress(property, address);
    try {
        server_ = std::make_unique<HttpServer>(
            wanted, [this](std::string const& path) { return answer(path); });
    } catch (std::runtime_error const& e) {
        throw WrongConfigurationException(property + "=" + address + ": " + e.what() +
                                          "; an address of this machine and a free port, or port "
                                          "0 for one that the system picks, would be right");
    }
}

void MetricsEndpoint::serve(std::shared_ptr<Engine const> engine) {
    std::lock_guard const lock(mutex_);
    engine_ = std::move(engine);
}

HttpAnswer MetricsEndpoint::answer(std::string const& path) const {
    if (path != "/metrics" && path != "/healthz") {
        return {404, "there are /metrics and /healthz\n"};
    }
    std::shared_ptr<Engine const> engine;
    {
        std::lock_guard const lock(mutex_);
        engine = engine_;
    }
    if (!engine) {
        return {unavailable, "the engine is starting\n"};
    }
    return path == "/healthz" ? healthOf(*engine)
                              : HttpAnswer{200, metricsText(figuresOf(*engine)), metricsTextType};
}

} // namespace zan::server
