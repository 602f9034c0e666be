#include "server/counterparty/Counterparty.h"

#include "server/counterparty/OrderDesk.h"
#include "server/log/MessageLog.h"
#include "server/sessions/FixAcceptor.h"
#include "server/wire/FieldText.h"

#include <chrono>
#include <condition_variable>
#include <filesystem>
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
    void logged(std::vector<FixEntry>& entries) override;
    void trouble(FixTrouble kind, std::string const& text) override;

private:
    void resumeDesk();
    void answer(std::vector<FixOutgoing> const& messages);
    void print(char direction, std::string const& text);

    Printer const printer_;
    OrderDesk desk_;
    std::mutex mutex_;
    std::condition_variable linkChanged_;
    bool linked_ = false;
    std::unique_ptr<MessageLog> log_;
    // Last, so that the reports end before what they use.
    std::unique_ptr<FixAcceptor> acceptor_;
    FixSession* session_;
};

namespace {

std::unique_ptr<MessageLog> openLog(CounterpartySettings const& settings) {
    if (settings.store.empty())
        return nullptr;
    std::filesystem::create_directories(settings.store);
    LogSettings log;
    log.file = settings.store + "/" + settings.sender + "-" + settings.target + ".log";
    return std::make_unique<MessageLog>(log);
}

FixSessionSettings sessionSettings(CounterpartySettings const& settings, FixSessionStore* store) {
    FixSessionSettings session;
    session.keys = {{"BeginString", settings.beginString},
                    {"SenderCompID", settings.sender},
                    {"TargetCompID", settings.target}};
    session.store = store;
    return session;
}

} // namespace

Counterparty::Trader::Trader(CounterpartySettings const& settings, Printer printer)
    : printer_(std::move(printer)), desk_(settings.beginString), log_(openLog(settings)),
      acceptor_(FixAcceptor::listen(settings.address, settings.port)),
      session_(&acceptor_->add(sessionSettings(settings, log_.get()), *this)) {
    resumeDesk();
    acceptor_->start();
}

// The newest report has the last execution, the newest acknowledgement the last order.
void Counterparty::Trader::resumeDesk() {
    if (!log_)
        return;
    struct Found {};
    LogQuery reports;
    reports.stream = static_cast<int>(FixStream::appOut);
    reports.where = "type = '8'";
    reports.newestFirst = true;
    try {
        log_->read(reports, [&](FixEntry&& report) {
            desk_.goOnBehind(report.text);
            if (valueOf(report.text, 39) == "0")
                throw Found();
        });
    } catch (Found const&) {
        // The older ones have smaller numbers.
    }
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

// What is refused was told as trouble.
void Counterparty::Trader::logged(std::vector<FixEntry>& entries) {
    std::vector<FixOutgoing> answers;
    for (FixEntry const& entry : entries) {
        bool const isIn = entry.stream == FixStream::adminIn || entry.stream == FixStream::appIn;
        if (entry.origin == FixOrigin::remark)
            continue;
        print(isIn ? '<' : '>', entry.text);
        if (entry.stream == FixStream::appIn)
            for (DeskReply& reply : desk_.handle(entry.text))
                answers.push_back({std::move(reply.type), std::move(reply.body)});
    }
    if (!answers.empty())
        answer(answers);
}

void Counterparty::Trader::answer(std::vector<FixOutgoing> const& messages) {
    std::vector<long> ids;
    if (session_->send(messages, std::chrono::milliseconds(0), ids) != FixSendResult::sent)
        print('!', "an answer was not sent: the client is gone or does not read");
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
