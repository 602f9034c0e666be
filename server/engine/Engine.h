/// The engine: the connections of a session file, by name.
///
/// Threads: any, but for construction and `stop`, which belong to the owner.
#ifndef ZANENGINE_SERVER_ENGINE_ENGINE_H
#define ZANENGINE_SERVER_ENGINE_ENGINE_H

#include "server/engine/Connection.h"
#include "server/engine/DataFolder.h"

#include <memory>
#include <string>
#include <vector>

namespace zan::server {

class Engine {
public:
    /// Takes the data folder and sets the connections up; none of them connects by itself. Throws
    /// `WrongConfigurationException`.
    Engine(std::vector<ConnectionSettings> connections, std::string const& dataFolder,
           EventSink const& sink);

    /// Stops the engine.
    ~Engine();
    Engine(Engine const&) = delete;
    Engine& operator=(Engine const&) = delete;

    /// Logs every connection out, delivers what waits and ends all threads. A listener must not
    /// call it: throws `ZANEngineException`, and nothing is stopped.
    void stop();

    /// In the order of the session file.
    std::vector<std::unique_ptr<Connection>> const& connections() const { return connections_; }

    /// Throws `ZANConnectionUnknownException`.
    Connection& connection(std::string const& name) const;

private:
    DataFolder const folder_;
    std::vector<std::unique_ptr<Connection>> connections_;
};

} // namespace zan::server

#endif
