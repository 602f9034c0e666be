#include "server/counterparty/Counterparty.h"

#include "server/counterparty/OrderDesk.h"
#include "server/sessions/FixAcceptor.h"

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace zan::server {

class Counterparty::Trader : public FixSessionEvents {
public:
    Trader(CounterpartySettings const& settings, Printer printer);
    ~Trader() override { acceptor_->stop(); }
    Trader(Trader const&) = delete;
    Trader& operator=(Trader const&) = delete;

    int port() const { return acceptor_->port(); }
    void logOut(std::string const& reason);

    void linkUp(std::string const& local, std::string const& remote) override;
    void linkDown() override;
    void loggedOn(int heartbeatSeconds) override;
    void loggedOff() override { print('!', "logged off"); }
    void received(std::string const& message, bool admin) override;
    void sent(std::string const& message, bool admin) override;
    void trouble(FixTrouble kind, std::string const& text) override;

private:
    void print(char direction, std::string const& text);

    Printer const printer_;
    OrderDesk desk_;
    std::mutex mutex_;
    std::condition_variable linkChanged_;
    bool linked_ = false;
    // Last, so that the reports end before what they use.
    std::unique_ptr<FixAcceptor> acceptor_;
    FixSession* session_;
};

namespace {

FixSessionSettings sessionSettings(CounterpartySettings const& settings) {
    FixSessionSettings session;
    session.keys = {{"BeginString", settings.beginString},
                    {"SenderCompID", settings.sender},
                    {"TargetCompID", settings.target}};
    if (!settings.store.empty())
        session.keys.emplace_back("FileStorePath", settings.store);
    return session;
}

} // namespace

Counterparty::Trader::Trader(CounterpartySettings const& settings, Printer printer)
    : printer_(std::move(printer)), desk_(settings.beginString),
      acceptor_(FixAcceptor::listen(settings.address, settings.port)),
      session_(&acceptor_->add(sessionSettings(settings), *this)) {
    acceptor_->start();
}

void Counterparty::Trader::logOut(std::string const& reason) {
    session_->requestLogout(reason);
    std::unique_lock lock(mutex_);
    linkChanged_.wait_for(lock, std::chrono::seconds(2), [this] { return !linked_; });
}

void Counterparty::Trader::linkUp(std::string const&, std::string const& remote) {
    std::lock_guard const lock(mutex_);
    linked_ = true;
    print('!', "connected from " + remote);
}

void Counterparty::Trader::linkDown() {
    std::lock_guard const lock(mutex_);
    linked_ = false;
    print('!', "disconnected");
    linkChanged_.notify_all();
}

void Counterparty::Trader::loggedOn(int heartbeatSeconds) {
    print('!', "logged on, heartbeats every " + std::to_string(heartbeatSeconds) + " s");
}

void Counterparty::Trader::received(std::string const& message, bool admin) {
    print('<', message);
    if (admin)
        return;
    for (DeskReply const& reply : desk_.handle(message))
        if (session_->send(reply.type, reply.body, std::chrono::milliseconds(0)) !=
            FixSendResult::sent)
            print('!', "an answer was not sent: the client is gone or does not read");
}

void Counterparty::Trader::sent(std::string const& message, bool) {
    print('>', message);
}

void Counterparty::Trader::trouble(FixTrouble, std::string const& text) {
    print('!', text);
}

void Counterparty::Trader::print(char direction, std::string const& text) {
    if (printer_)
        printer_(direction, text);
}

Counterparty::Counterparty(CounterpartySettings const& settings, Printer printer)
    : trader_(std::make_unique<Trader>(settings, std::move(printer))) {}

Counterparty::~Counterparty() = default;

int Counterparty::port() const {
    return trader_->port();
}

void Counterparty::logOut(std::string const& reason) {
    trader_->logOut(reason);
}

} // namespace zan::server
