#include "server/sessions/Sockets.h"

#include <cerrno>
#include <cstdint>
#include <future>
#include <memory>
#include <stdexcept>
#include <system_error>
#include <thread>

#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

namespace zan {
namespace server {

namespace {

using Clock = std::chrono::steady_clock;
using Addresses = std::shared_ptr<addrinfo>;

// Closes a descriptor that nobody took over.
class Descriptor {
public:
    explicit Descriptor(int descriptor) : descriptor_(descriptor) {
        if (descriptor < 0)
            throw std::runtime_error(errorText(errno));
    }
    ~Descriptor() {
        if (descriptor_ >= 0)
            close(descriptor_);
    }
    Descriptor(Descriptor const&) = delete;
    Descriptor& operator=(Descriptor const&) = delete;

    int get() const { return descriptor_; }
    int release() {
        int const taken = descriptor_;
        descriptor_ = -1;
        return taken;
    }

private:
    int descriptor_;
};

int millisUntil(Clock::time_point deadline) {
    auto const left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
    return left > 0 ? static_cast<int>(left) : 0;
}

Addresses resolve(std::string const& host, std::string const& port, int flags) {
    addrinfo hints = {};
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = flags | AI_NUMERICSERV;
    addrinfo* found = nullptr;
    int const error =
        getaddrinfo(host.empty() ? nullptr : host.c_str(), port.c_str(), &hints, &found);
    if (error != 0)
        throw std::runtime_error(gai_strerror(error));
    return Addresses(found, freeaddrinfo);
}

// A name server that does not answer holds its caller for a long time: a thread that nobody waits
// for asks it, so that stopping a session never does.
Addresses resolveWithin(SocketTarget const& target, Clock::time_point deadline, WakeUp& wakeUp) {
    try {
        return resolve(target.host, target.port, AI_NUMERICHOST);
    } catch (std::runtime_error const&) {
        // It is a name.
    }
    std::packaged_task<Addresses()> task([target] { return resolve(target.host, target.port, 0); });
    std::future<Addresses> answer = task.get_future();
    std::thread(std::move(task)).detach();
    while (answer.wait_for(std::chrono::milliseconds(0)) != std::future_status::ready) {
        pollfd quit = {wakeUp.descriptor(), POLLIN, 0};
        if (poll(&quit, 1, 20) > 0)
            throw std::runtime_error("stopped");
        if (Clock::now() >= deadline)
            throw std::runtime_error("the host's name was not resolved in time");
    }
    return answer.get();
}

void bindSource(int socket, SocketTarget const& target) {
    if (target.sourceHost.empty() && target.sourcePort.empty())
        return;
    std::string const port = target.sourcePort.empty() ? "0" : target.sourcePort;
    Addresses const source = resolve(target.sourceHost, port, AI_PASSIVE | AI_NUMERICHOST);
    int const on = 1;
    setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    if (bind(socket, source->ai_addr, source->ai_addrlen) != 0)
        throw std::runtime_error("cannot bind " + target.sourceHost + ":" + port + ": " +
                                 errorText(errno));
}

// 0 or the system's error number.
int connectOne(int socket, addrinfo const& address, Clock::time_point deadline, WakeUp& wakeUp) {
    if (connect(socket, address.ai_addr, address.ai_addrlen) == 0)
        return 0;
    if (errno != EINPROGRESS)
        return errno;
    pollfd events[] = {{socket, POLLOUT, 0}, {wakeUp.descriptor(), POLLIN, 0}};
    int ready = 0;
    while ((ready = poll(events, 2, millisUntil(deadline))) < 0 && errno == EINTR) {
    }
    if (ready == 0)
        return ETIMEDOUT;
    if (events[1].revents != 0)
        return ECANCELED;
    int error = 0;
    socklen_t size = sizeof error;
    getsockopt(socket, SOL_SOCKET, SO_ERROR, &error, &size);
    return error;
}

int connectAny(SocketTarget const& target, Clock::time_point deadline, WakeUp& wakeUp) {
    Addresses const addresses = resolveWithin(target, deadline, wakeUp);
    int error = EADDRNOTAVAIL;
    for (addrinfo const* each = addresses.get(); each != nullptr; each = each->ai_next) {
        Descriptor made(socket(each->ai_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
        prepareSocket(made.get(), target);
        bindSource(made.get(), target);
        error = connectOne(made.get(), *each, deadline, wakeUp);
        if (error == 0)
            return made.release();
        if (error == ECANCELED)
            break;
    }
    throw std::runtime_error(errorText(error));
}

std::string addressText(sockaddr_storage const& address, socklen_t size) {
    char host[NI_MAXHOST];
    char port[NI_MAXSERV];
    int const error = getnameinfo(reinterpret_cast<sockaddr const*>(&address), size, host,
                                  sizeof host, port, sizeof port, NI_NUMERICHOST | NI_NUMERICSERV);
    return error == 0 ? std::string(host) + ":" + port : std::string();
}

} // namespace

WakeUp::WakeUp() : descriptor_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (descriptor_ < 0)
        throw std::runtime_error("no descriptor for a session: " + errorText(errno));
}

WakeUp::~WakeUp() {
    close(descriptor_);
}

void WakeUp::ring() {
    std::uint64_t const one = 1;
    // A full counter means that it rings already.
    ssize_t const written = write(descriptor_, &one, sizeof one);
    static_cast<void>(written);
}

void WakeUp::silence() {
    std::uint64_t count = 0;
    ssize_t const taken = read(descriptor_, &count, sizeof count);
    static_cast<void>(taken);
}

int connectSocket(SocketTarget const& target, std::chrono::milliseconds timeout, WakeUp& wakeUp) {
    try {
        return connectAny(target, Clock::now() + timeout, wakeUp);
    } catch (std::exception const& reason) {
        throw std::runtime_error("cannot connect to " + target.host + ":" + target.port + ": " +
                                 reason.what());
    }
}

int listenSocket(std::string const& address, int port) {
    std::string const where = address + ":" + std::to_string(port);
    try {
        Addresses const found = resolve(address, std::to_string(port), AI_NUMERICHOST | AI_PASSIVE);
        Descriptor made(socket(found->ai_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
        int const on = 1;
        setsockopt(made.get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
        if (bind(made.get(), found->ai_addr, found->ai_addrlen) != 0 ||
            listen(made.get(), SOMAXCONN) != 0)
            throw std::runtime_error(errorText(errno));
        return made.release();
    } catch (std::exception const& reason) {
        throw std::runtime_error("cannot listen on " + where + ": " + reason.what());
    }
}

void prepareSocket(int socket, SocketTarget const& target) {
    int const on = target.noDelay ? 1 : 0;
    setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    if (target.sendBuffer > 0)
        setsockopt(socket, SOL_SOCKET, SO_SNDBUF, &target.sendBuffer, sizeof target.sendBuffer);
    if (target.receiveBuffer > 0)
        setsockopt(socket, SOL_SOCKET, SO_RCVBUF, &target.receiveBuffer,
                   sizeof target.receiveBuffer);
}

std::string localAddress(int socket) {
    sockaddr_storage address = {};
    socklen_t size = sizeof address;
    getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size);
    return addressText(address, size);
}

std::string remoteAddress(int socket) {
    sockaddr_storage address = {};
    socklen_t size = sizeof address;
    getpeername(socket, reinterpret_cast<sockaddr*>(&address), &size);
    return addressText(address, size);
}

int localPort(int socket) {
    std::string const text = localAddress(socket);
    return std::stoi(text.substr(text.rfind(':') + 1));
}

std::string errorText(int error) {
    return std::generic_category().message(error);
}

} // namespace server
} // namespace zan
