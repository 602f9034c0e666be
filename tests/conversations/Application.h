/// The application's side of a conversation: the engine, by the facade.
#ifndef ZANENGINE_TESTS_CONVERSATIONS_APPLICATION_H
#define ZANENGINE_TESTS_CONVERSATIONS_APPLICATION_H

#include "infra/UserTicket.h"
#include "infra/counted_ptr.h"
#include "support/EventRecorder.h"

#include <future>
#include <string>
#include <vector>

namespace conversations {

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
    void restart();
    std::string call(std::string const& operation, std::string const& argument);

    std::string const sessionFile_;
    UserTicket const ticket_{"tester", ""};
    std::vector<counted_ptr<IZANEventListener>> recorders_;
    std::future<std::string> outcome_;
};

} // namespace conversations

#endif
