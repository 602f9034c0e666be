/// A counterparty that fills orders, over real FIX: for demonstrations and tests.
#ifndef ZANENGINE_SERVER_COUNTERPARTY_COUNTERPARTY_H
#define ZANENGINE_SERVER_COUNTERPARTY_COUNTERPARTY_H

#include <functional>
#include <memory>
#include <string>

namespace zan::server {

/// How a counterparty is reached, and who it is.
struct CounterpartySettings {
    std::string address = "127.0.0.1";
    int port = 0; ///< 0: one that the system picks
    std::string beginString = "FIX.4.4";
    std::string sender = "COUNTERPARTY"; ///< its own id
    std::string target = "CLIENT";       ///< the id of who logs on to it
    /// Where the session's numbers and messages are kept; empty: in memory, so that a client has to
    /// start with number 1 again when the counterparty does.
    std::string store;
};

/// Listens, takes one session at a time and trades as `OrderDesk` does. Thread-safe.
class Counterparty {
public:
    /// Gets every message once, `<` before what comes in and `>` before what goes out, and the
    /// session's own news after `!`. Called from the counterparty's threads; must not throw.
    using Printer = std::function<void(char direction, std::string const& text)>;

    /// Binds the port and begins to listen. Throws std::runtime_error with the reason.
    explicit Counterparty(CounterpartySettings const& settings, Printer printer = nullptr);

    /// Closes the link and the port.
    ~Counterparty();
    Counterparty(Counterparty const&) = delete;
    Counterparty& operator=(Counterparty const&) = delete;

    int port() const;

    /// Says goodbye to a client that is logged on and waits for its answer, two seconds at most.
    void logOut(std::string const& reason);

private:
    class Trader;
    std::unique_ptr<Trader> trader_;
};

} // namespace zan::server

#endif
