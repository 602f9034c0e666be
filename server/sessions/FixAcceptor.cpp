#include "server/sessions/FixAcceptor.h"

#include "server/sessions/FixScanner.h"
#include "server/sessions/SessionRunner.h"

#include <condition_variable>
#include <list>
#include <new>
#include <thread>

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace zan {
namespace server {

namespace {

using Clock = std::chrono::steady_clock;

// Strangers that may be connected at a time without having said who they are.
std::size_t const mostStrangers = 64;
// How long a new link waits for the end of the last one.
std::chrono::seconds const patience(1);

class AcceptedSession : public SessionRunner {
public:
    AcceptedSession(FixSessionSettings const& settings, FixSessionEvents& events)
        : SessionRunner(settings, false, events) {}

    void start(FixFields const& logonFields) override {
        session_.setLogonFields(logonFields);
        forgetRequests();
    }
    void stop() override { quit(); }

    bool isMeantBy(std::string const& logon) const;
    SocketTarget const& target() const { return setup_.targets.front(); }
    /// False when the session keeps the link that it has, or was stopped; the socket is taken over
    /// else. A client that comes back at once may be faster than the end of its last link here.
    bool adopt(int socket, std::string const& logon, FixFramer& rest);

private:
    bool takeTurn();
    void giveTurn();

    std::mutex turnMutex_;
    std::condition_variable turnGiven_;
    bool hasLink_ = false;
};

bool AcceptedSession::isMeantBy(std::string const& logon) const {
    return fixValue(logon, 8) == session_.id().getBeginString().getValue() &&
           fixValue(logon, 49) == session_.id().getTargetCompID().getValue() &&
           fixValue(logon, 56) == session_.id().getSenderCompID().getValue();
}

bool AcceptedSession::adopt(int socket, std::string const& logon, FixFramer& rest) {
    if (!takeTurn())
        return false;
    forgetLogout();
    prepareSocket(socket, target());
    framer_ = rest;
    serve(socket, logon);
    giveTurn();
    return true;
}

bool AcceptedSession::takeTurn() {
    std::unique_lock<std::mutex> lock(turnMutex_);
    if (!turnGiven_.wait_for(lock, patience, [this] { return !hasLink_; }) || isStopped())
        return false;
    hasLink_ = true;
    return true;
}

void AcceptedSession::giveTurn() {
    std::lock_guard<std::mutex> lock(turnMutex_);
    hasLink_ = false;
    turnGiven_.notify_one();
}

// One accepted link with its thread.
struct Guest {
    std::thread thread;
    std::atomic<bool> known{false};
    std::atomic<bool> gone{false};
};

class Acceptor : public FixAcceptor {
public:
    Acceptor(std::string const& address, int port)
        : listener_(listenSocket(address, port)), port_(localPort(listener_)) {}
    ~Acceptor() override;
    Acceptor(Acceptor const&) = delete;
    Acceptor& operator=(Acceptor const&) = delete;

    int port() const override { return port_; }
    FixSession& add(FixSessionSettings const& settings, FixSessionEvents& events) override;
    void start() override;
    void stop() override;

private:
    void acceptAll();
    void welcome(int socket);
    void removeGone();
    void entertain(int socket, Guest& guest);
    bool readLogon(int socket, FixFramer& framer, std::string& logon);
    bool waitForBytes(int socket, Clock::time_point deadline);
    AcceptedSession* find(std::string const& logon);

    int const listener_;
    int const port_;
    std::mutex lifeCycle_;
    std::atomic<bool> stopping_{false};
    WakeUp quit_;
    std::vector<std::unique_ptr<AcceptedSession>> sessions_;
    std::thread thread_;
    std::list<Guest> guests_;
};

Acceptor::~Acceptor() {
    stop();
    close(listener_);
}

FixSession& Acceptor::add(FixSessionSettings const& settings, FixSessionEvents& events) {
    sessions_.emplace_back(new AcceptedSession(settings, events));
    return *sessions_.back();
}

void Acceptor::start() {
    std::lock_guard<std::mutex> lock(lifeCycle_);
    if (!thread_.joinable() && !stopping_)
        thread_ = std::thread([this] { acceptAll(); });
}

void Acceptor::stop() {
    std::lock_guard<std::mutex> lock(lifeCycle_);
    stopping_ = true;
    quit_.ring();
    if (thread_.joinable())
        thread_.join();
    shutdown(listener_, SHUT_RDWR);
    for (auto const& session : sessions_)
        session->stop();
    for (Guest& guest : guests_)
        guest.thread.join();
    guests_.clear();
}

void Acceptor::acceptAll() {
    while (!stopping_) {
        pollfd events[] = {{listener_, POLLIN, 0}, {quit_.descriptor(), POLLIN, 0}};
        poll(events, 2, -1);
        removeGone();
        if ((events[0].revents & POLLIN) == 0 || stopping_)
            continue;
        int const socket = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
        if (socket >= 0)
            welcome(socket);
        else
            usleep(10 * 1000); // no descriptor is left: the next one may find one
    }
}

void Acceptor::welcome(int socket) {
    std::size_t strangers = 0;
    for (Guest const& guest : guests_)
        strangers += guest.known ? 0 : 1;
    if (strangers >= mostStrangers) {
        close(socket);
        return;
    }
    guests_.emplace_back();
    Guest& guest = guests_.back();
    guest.thread = std::thread([this, socket, &guest] { entertain(socket, guest); });
}

void Acceptor::removeGone() {
    for (auto guest = guests_.begin(); guest != guests_.end();) {
        if (guest->gone) {
            guest->thread.join();
            guest = guests_.erase(guest);
        } else {
            ++guest;
        }
    }
}

void Acceptor::entertain(int socket, Guest& guest) {
    FixFramer framer;
    std::string logon;
    AcceptedSession* session = nullptr;
    try {
        if (readLogon(socket, framer, logon))
            session = find(logon);
    } catch (std::bad_alloc const&) {
        session = nullptr; // the link is closed
    }
    guest.known = session != nullptr;
    if (session == nullptr || stopping_ || !session->adopt(socket, logon, framer))
        close(socket);
    guest.gone = true;
}

bool Acceptor::readLogon(int socket, FixFramer& framer, std::string& logon) {
    auto const deadline = Clock::now() + std::chrono::seconds(10);
    std::string fault;
    FixFramer::Result result = FixFramer::Result::incomplete;
    while (result == FixFramer::Result::incomplete && waitForBytes(socket, deadline)) {
        char bytes[4096];
        ssize_t const count = recv(socket, bytes, sizeof bytes, 0);
        if (count <= 0)
            return false;
        framer.append(bytes, static_cast<std::size_t>(count));
        result = framer.next(logon, fault);
    }
    return result == FixFramer::Result::message && fixValue(logon, 35) == "A";
}

bool Acceptor::waitForBytes(int socket, Clock::time_point deadline) {
    auto const left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
    pollfd events[] = {{socket, POLLIN, 0}, {quit_.descriptor(), POLLIN, 0}};
    return left.count() > 0 && poll(events, 2, static_cast<int>(left.count())) > 0 &&
           events[1].revents == 0;
}

AcceptedSession* Acceptor::find(std::string const& logon) {
    for (auto const& session : sessions_)
        if (session->isMeantBy(logon))
            return session.get();
    return nullptr;
}

} // namespace

FixAcceptor::~FixAcceptor() = default;

std::unique_ptr<FixAcceptor> FixAcceptor::listen(std::string const& address, int port) {
    return std::unique_ptr<FixAcceptor>(new Acceptor(address, port));
}

} // namespace server
} // namespace zan
