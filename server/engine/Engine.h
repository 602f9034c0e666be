/// The engine: the connections of a session file, by name.
///
/// Threads: any, but for making it and `start`, which belong to the owner.
#ifndef ZANENGINE_SERVER_ENGINE_ENGINE_H
#define ZANENGINE_SERVER_ENGINE_ENGINE_H

#include "server/engine/Connection.h"
#include "server/engine/DataFolder.h"
#include "server/engine/DiagnosticQueue.h"

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace zan::server {

class Engine final : public std::enable_shared_from_this<Engine> {
public:
    /// Takes the data folder and sets the connections up; none of them connects by itself. Throws
    /// `WrongConfigurationException`, and `ZANPersistentStorageException` when a message log cannot
    /// be read.
    static std::shared_ptr<Engine> make(std::vector<ConnectionSettings> connections,
                                        std::string const& dataFolder, EventSink const& sink);

    /// Waits until no engine of the process is left, those included that listeners which have not
    /// returned hold; false when the time was over before.
    static bool waitForAll(std::chrono::milliseconds patience);

    ~Engine();
    Engine(Engine const&) = delete;
    Engine& operator=(Engine const&) = delete;

    /// Logs every connection out, delivers what waits and ends all threads; a second call does
    /// nothing. A listener may call it: what waits for its own connection is then dropped, and that
    /// connection's delivery thread, which holds the engine, ends when the listener returns.
    void stop();

    /// In the order of the session file.
    std::vector<std::unique_ptr<Connection>> const& connections() const { return connections_; }

    /// Throws `ZANConnectionUnknownException`.
    Connection& connection(std::string const& name) const;

    std::string const& dataFolder() const { return folder_.path(); }

    /// What an operator has to see to, one line each; nothing when all is well.
    std::vector<std::string> ailments() const;

    /// For what else there is to tell about the engine.
    DiagnosticQueue& diagnostics() { return diagnostics_; }

    /// Whether the caller is a listener of one of the connections.
    bool isDelivering() const;

    /// How long the caller may wait until a listener returns. A listener may not at all: listeners
    /// that wait for each other would wait forever.
    std::chrono::milliseconds patienceWithListener() const;

private:
    Engine(std::vector<ConnectionSettings> connections, std::string const& dataFolder,
           EventSink const& sink);
    void start();
    void keep();

    /// Counts the engines there are.
    struct Presence {
        Presence();
        Presence(Presence const&) = delete;
        Presence& operator=(Presence const&) = delete;
        ~Presence();
    };

    Presence const presence_; // ends when all else has ended
    DiagnosticQueue diagnostics_;
    DataFolder folder_;
    std::vector<std::unique_ptr<Connection>> connections_;
    std::mutex keeperMutex_;
    std::condition_variable keeperWakes_;
    bool isStopping_ = false;
    std::thread keeper_;
};

} // namespace zan::server

#endif
