#include "server/sessions/SocketLink.h"

#include <cerrno>
#include <new>

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace zan {
namespace server {

namespace {
using Lock = std::lock_guard<std::mutex>;
}

std::size_t const SocketLink::roomLimit;
std::size_t const SocketLink::hardLimit;

SocketLink::~SocketLink() {
    close(false);
}

void SocketLink::open(int socket) {
    Lock lock(mutex_);
    backlog_.clear();
    backlogBegin_ = 0;
    fault_.clear();
    socket_ = socket;
    ending_.store(false, std::memory_order_release);
}

void SocketLink::close(bool politely) {
    end();
    if (politely && fault().empty())
        waitForItsEnd();
    Lock lock(mutex_);
    if (socket_ >= 0)
        ::close(socket_);
    socket_ = -1;
}

// Closing a socket that holds unread bytes resets the link, and the counterparty loses what it has
// not read yet, such as the Logout that tells it why.
void SocketLink::waitForItsEnd() {
    using Clock = std::chrono::steady_clock;
    if (socket_ < 0)
        return;
    flush();
    shutdown(socket_, SHUT_WR);
    auto const deadline = Clock::now() + std::chrono::milliseconds(300);
    char dropped[4096];
    while (Clock::now() < deadline) {
        ssize_t const count = recv(socket_, dropped, sizeof dropped, 0);
        if (count == 0 || (count < 0 && errno != EAGAIN && errno != EINTR))
            return;
        pollfd event = {socket_, POLLIN, 0};
        if (count < 0)
            poll(&event, 1, 10);
    }
}

bool SocketLink::write(std::string const& bytes) {
    bool mustWake = false;
    {
        Lock lock(mutex_);
        if (ending() || socket_ < 0)
            return false;
        std::size_t written = 0;
        bool const waiting = hasBacklog();
        if (!waiting)
            written = writeNow(bytes.data(), bytes.size());
        else if (backlog_.size() - backlogBegin_ > hardLimit)
            endWith("the counterparty does not read");
        keep(bytes, written);
        mustWake = !waiting && hasBacklog();
    }
    if (mustWake)
        wakeUp_.ring();
    return !ending();
}

// What was committed and cannot be kept does not leave over this link any more.
void SocketLink::keep(std::string const& bytes, std::size_t written) {
    try {
        backlog_.append(bytes, written, std::string::npos);
    } catch (std::bad_alloc const&) {
        endWith("out of memory");
    }
}

std::size_t SocketLink::writeNow(char const* bytes, std::size_t count) {
    std::size_t written = 0;
    while (written < count) {
        ssize_t const sent =
            send(socket_, bytes + written, count - written, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (sent >= 0) {
            written += static_cast<std::size_t>(sent);
        } else if (errno != EINTR) {
            if (errno != EAGAIN && errno != EWOULDBLOCK)
                endWith(errorText(errno));
            break;
        }
    }
    return written;
}

void SocketLink::flush() {
    Lock lock(mutex_);
    if (socket_ < 0 || !hasBacklog())
        return;
    backlogBegin_ += writeNow(backlog_.data() + backlogBegin_, backlog_.size() - backlogBegin_);
    if (backlogBegin_ > backlog_.size() / 2) {
        backlog_.erase(0, backlogBegin_);
        backlogBegin_ = 0;
    }
    if (backlog_.size() - backlogBegin_ <= roomLimit)
        room_.notify_all();
}

bool SocketLink::hasBacklog() const {
    return backlog_.size() > backlogBegin_;
}

std::size_t SocketLink::backlog() const {
    Lock lock(mutex_);
    return socket_ < 0 ? 0 : backlog_.size() - backlogBegin_;
}

bool SocketLink::waitForRoom(std::chrono::steady_clock::time_point deadline) {
    std::unique_lock<std::mutex> lock(mutex_);
    auto const answer = [this] { return ending() || backlog_.size() - backlogBegin_ <= roomLimit; };
    return (answer() || room_.wait_until(lock, deadline, answer)) && !ending();
}

void SocketLink::end() {
    Lock lock(mutex_);
    endWith(std::string());
}

// The first fault is the cause, later ones follow from it.
void SocketLink::endWith(std::string const& fault) {
    if (!ending())
        fault_ = fault;
    ending_.store(true, std::memory_order_release);
    room_.notify_all();
    wakeUp_.ring();
}

bool SocketLink::waitForWork(bool reading, std::chrono::milliseconds timeout) {
    short events = reading ? POLLIN : 0;
    {
        Lock lock(mutex_);
        if (hasBacklog())
            events = static_cast<short>(events | POLLOUT);
    }
    // Asking for nothing would still report a link that broke, again and again.
    pollfd watched[] = {{wakeUp_.descriptor(), POLLIN, 0}, {events == 0 ? -1 : socket_, events, 0}};
    if (poll(watched, 2, static_cast<int>(timeout.count())) <= 0)
        return false;
    if (watched[0].revents != 0)
        wakeUp_.silence();
    if ((watched[1].revents & (POLLOUT | POLLERR | POLLHUP)) != 0)
        flush();
    return reading && (watched[1].revents & (POLLIN | POLLERR | POLLHUP)) != 0;
}

long SocketLink::read(char* bytes, std::size_t count) {
    ssize_t const got = recv(socket_, bytes, count, MSG_DONTWAIT);
    if (got > 0)
        return static_cast<long>(got);
    if (got < 0 && (errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR))
        return 0;
    std::string const reason =
        got == 0 ? "the counterparty closed the link" : "the link broke: " + errorText(errno);
    Lock lock(mutex_);
    endWith(reason);
    return -1;
}

std::string SocketLink::fault() const {
    Lock lock(mutex_);
    return fault_;
}

} // namespace server
} // namespace zan
