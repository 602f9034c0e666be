#include "server/engine/Engine.h"

#include "errors/ZANConnectionUnknownException.h"
#include "errors/ZANPersistentStorageException.h"
#include "server/engine/EngineErrors.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace zan::server {

namespace {

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds keepersInterval = 250ms;

// How long a stop waits for listeners to take what waits for them.
constexpr std::chrono::milliseconds patienceWithListeners = 10s;

// How long an operation that needs a listener to return waits for it.
constexpr std::chrono::milliseconds patienceWithOneListener = 2s;

struct Living {
    std::mutex mutex;
    std::condition_variable ended;
    int engines = 0;

    void change(int by) {
        {
            std::lock_guard const lock(mutex);
            engines += by;
        }
        ended.notify_all();
    }
};

// Never destroyed: a thread that was left behind ends its engine late.
Living& living() {
    static Living& all = *new Living;
    return all;
}

} // namespace

std::shared_ptr<Engine> Engine::make(std::vector<ConnectionSettings> connections,
                                     std::string const& dataFolder, EventSink const& sink) {
    std::shared_ptr<Engine> engine(new Engine(std::move(connections), dataFolder, sink));
    engine->start();
    return engine;
}

Engine::Engine(std::vector<ConnectionSettings> connections, std::string const& dataFolder,
               EventSink const& sink)
    : folder_(dataFolder) {
    for (ConnectionSettings& settings : connections) {
        try {
            connections_.push_back(std::make_unique<Connection>(std::move(settings), folder_.path(),
                                                                sink, diagnostics_));
        } catch (LogFailure const& e) {
            diagnostics_.tell(DiagnosticLevel::Error, "log", [&] { return e.what(); });
            fail<ZANPersistentStorageException>(e.what());
        }
    }
}

Engine::Presence::Presence() {
    living().change(1);
}

Engine::Presence::~Presence() {
    living().change(-1);
}

bool Engine::waitForAll(std::chrono::milliseconds patience) {
    std::unique_lock lock(living().mutex);
    return living().ended.wait_for(lock, patience, [] { return living().engines == 0; });
}

// Where a listener held the engine longest, this runs on its delivery thread.
Engine::~Engine() = default;

void Engine::start() {
    for (auto const& connection : connections_) {
        connection->start(shared_from_this());
    }
    keeper_ = std::thread([this] { keep(); });
    diagnostics_.tell(DiagnosticLevel::Info, "engine", [this] {
        return "runs; connections: " + std::to_string(connections_.size()) +
               ", data folder: " + dataFolder();
    });
    if (!folder_.warning().empty()) {
        diagnostics_.tell(DiagnosticLevel::Warning, "engine", [this] { return folder_.warning(); });
    }
}

void Engine::keep() {
    std::unique_lock lock(keeperMutex_);
    while (!keeperWakes_.wait_for(lock, keepersInterval, [this] { return isStopping_; })) {
        lock.unlock();
        if (std::string news = folder_.watchLock(); !news.empty()) {
            diagnostics_.tell(DiagnosticLevel::Error, "engine", [&] { return std::move(news); });
        }
        for (auto const& connection : connections_) {
            connection->maintain();
        }
        lock.lock();
    }
}

void Engine::stop() {
    {
        std::lock_guard const lock(keeperMutex_);
        if (std::exchange(isStopping_, true)) {
            return;
        }
    }
    keeperWakes_.notify_all();
    keeper_.join();
    // Each waits for its counterparty's answer: at the same time, not one after the other.
    std::vector<std::thread> stopping;
    for (auto const& connection : connections_) {
        auto const patience = connection->isDelivering() ? 0ms : patienceWithListeners;
        stopping.emplace_back(
            [&connection, patience] { connection->stop("the engine stops", patience); });
    }
    for (std::thread& thread : stopping) {
        thread.join();
    }
    diagnostics_.tell(DiagnosticLevel::Info, "engine",
                      [this] { return "has stopped; data folder: " + dataFolder(); });
}

Connection& Engine::connection(std::string const& name) const {
    auto const found =
        std::ranges::find(connections_, name, [](auto const& entry) { return entry->name(); });
    if (found == connections_.end()) {
        fail<ZANConnectionUnknownException>("this engine has no connection \"" + name + "\"");
    }
    return **found;
}

std::vector<std::string> Engine::ailments() const {
    std::vector<std::string> ailments;
    for (auto const& connection : connections_) {
        std::ranges::move(connection->ailments(), std::back_inserter(ailments));
    }
    return ailments;
}

bool Engine::isDelivering() const {
    return std::ranges::any_of(connections_,
                               [](auto const& connection) { return connection->isDelivering(); });
}

std::chrono::milliseconds Engine::patienceWithListener() const {
    return isDelivering() ? 0ms : patienceWithOneListener;
}

} // namespace zan::server
