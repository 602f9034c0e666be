#include "server/sessions/FixSession.h"

#include "server/sessions/SessionRunner.h"

#include <thread>

#include <poll.h>

namespace zan {
namespace server {

namespace {

// How often a session that is closed looks at its clock.
std::chrono::milliseconds const clockInterval(1000);

class InitiatorSession : public SessionRunner {
public:
    InitiatorSession(FixSessionSettings const& settings, FixSessionEvents& events)
        : SessionRunner(settings, true, events) {}
    ~InitiatorSession() override { stop(); }
    InitiatorSession(InitiatorSession const&) = delete;
    InitiatorSession& operator=(InitiatorSession const&) = delete;

    void start(FixFields const& logonFields) override;
    void stop() override;

private:
    void run();
    void connectAndServe();
    void waitForHours();
    void pause(std::chrono::milliseconds time);

    std::mutex lifeCycle_;
    std::thread thread_;
    std::atomic<bool> running_{false};
    std::size_t attempts_ = 0;
};

void InitiatorSession::start(FixFields const& logonFields) {
    std::lock_guard<std::mutex> lock(lifeCycle_);
    if (running_ && !isQuitting())
        return;
    if (thread_.joinable())
        thread_.join();
    forgetRequests();
    session_.setLogonFields(logonFields);
    running_ = true;
    thread_ = std::thread([this] { run(); });
}

void InitiatorSession::stop() {
    std::lock_guard<std::mutex> lock(lifeCycle_);
    quit();
    if (thread_.joinable())
        thread_.join();
}

void InitiatorSession::run() {
    while (!isQuitting()) {
        waitForHours();
        connectAndServe();
        if (session_.isOpen())
            pause(setup_.reconnectInterval);
    }
    running_ = false;
}

void InitiatorSession::waitForHours() {
    bool isTold = false;
    while (!isQuitting() && !session_.isOpen()) {
        std::string const text = session_.rest();
        if (!isTold && !isQuitting())
            events_.trouble(FixTrouble::closed, text);
        isTold = true;
        pause(clockInterval);
    }
}

void InitiatorSession::connectAndServe() {
    link_.wakeUp().silence();
    if (isQuitting())
        return;
    SocketTarget const& target = setup_.targets[attempts_++ % setup_.targets.size()];
    int socket = -1;
    try {
        socket = connectSocket(target, setup_.logonTimeout, link_.wakeUp());
    } catch (std::exception const& error) {
        if (!isQuitting())
            events_.trouble(FixTrouble::unreachable, error.what());
        return;
    }
    serve(socket, std::string());
}

void InitiatorSession::pause(std::chrono::milliseconds time) {
    auto const end = std::chrono::steady_clock::now() + time;
    while (!isQuitting()) {
        auto const left = std::chrono::duration_cast<std::chrono::milliseconds>(
            end - std::chrono::steady_clock::now());
        if (left.count() <= 0)
            return;
        link_.wakeUp().silence();
        pollfd bell = {link_.wakeUp().descriptor(), POLLIN, 0};
        if (!isQuitting())
            poll(&bell, 1, static_cast<int>(left.count()));
    }
}

} // namespace

FixSessionEvents::~FixSessionEvents() = default;

FixSession::~FixSession() = default;

std::unique_ptr<FixSession> FixSession::initiator(FixSessionSettings const& settings,
                                                  FixSessionEvents& events) {
    return std::unique_ptr<FixSession>(new InitiatorSession(settings, events));
}

} // namespace server
} // namespace zan
