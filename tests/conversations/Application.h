/// The application's side of a conversation: the engine, by the facade.
#ifndef ZANENGINE_TESTS_CONVERSATIONS_APPLICATION_H
#define ZANENGINE_TESTS_CONVERSATIONS_APPLICATION_H

#include "conformance/EventRecorder.h"
#include "infra/UserTicket.h"
#include "infra/counted_ptr.h"

#include <future>
#include <string>
#include <vector>

namespace conversations {

using zan::conformance::EventRecorder;
using zan::conformance::SeenEvent;

/// An engine with one connection, `C`. It ends with this object.
///
/// Threads: one, the operations that are begun aside.
class Application {
public:
    using LogTable = std::vector<std::vector<std::string>>;

    /// Starts an engine on this session file.
    explicit Application(std::string sessionFile);
    ~Application();
    Application(Application const&) = delete;
    Application& operator=(Application const&) = delete;

    /// Calls an operation by its name on a thread of its own. `restart` ends the engine and starts
    /// another on the same folder.
    void begin(std::string const& operation, std::string const& argument);
    bool isBusy() const { return outcome_.valid(); }

    /// Waits for what was begun. Its result as text, or the class of the exception and its text.
    std::string finish();

    long flags() const;
    std::string lastError() const;
    LogTable log() const;

    /// What the listener of the connection was told, engine after engine.
    std::vector<SeenEvent> events() const;

private:
    void start();
    std::string call(std::string const& operation, std::string const& argument);

    // The operations, each with its argument; they return their result as text.
    std::string connect(std::string const& fields);
    std::string disconnect(std::string const& reason);
    std::string resetConnection(std::string const&);
    std::string restart(std::string const&);
    std::string ping(std::string const& millis);
    std::string send(std::string const& message);
    std::string sendAdmin(std::string const& message);
    std::string sendBatch(std::string const& messages);
    std::string resend(std::string const& filter);

    std::string const sessionFile_;
    UserTicket const ticket_{"tester", ""};
    std::vector<counted_ptr<IZANEventListener>> recorders_;
    std::future<std::string> outcome_;
};

} // namespace conversations

#endif
