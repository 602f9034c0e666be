#include "apps/zan/TcpProbe.h"

#include <cerrno>
#include <cstring>
#include <memory>

#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace zan::cli {

namespace {

constexpr int patienceMillis = 3000;

std::string problemAt(addrinfo const& address) {
    int const link = socket(address.ai_family, address.ai_socktype | SOCK_NONBLOCK | SOCK_CLOEXEC,
                            address.ai_protocol);
    if (link < 0) {
        return std::strerror(errno);
    }
    int error = connect(link, address.ai_addr, address.ai_addrlen) == 0 ? 0 : errno;
    if (error == EINPROGRESS) {
        pollfd waited{link, POLLOUT, 0};
        socklen_t size = sizeof error;
        if (poll(&waited, 1, patienceMillis) <= 0) {
            error = ETIMEDOUT;
        } else {
            getsockopt(link, SOL_SOCKET, SO_ERROR, &error, &size);
        }
    }
    close(link);
    return error == 0 ? "" : std::strerror(error);
}

} // namespace

std::string tcpProblem(std::string const& host, std::string const& port) {
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    if (int const error = getaddrinfo(host.c_str(), port.c_str(), &hints, &found); error != 0) {
        return gai_strerror(error);
    }
    std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> const addresses(found, freeaddrinfo);
    std::string problem;
    for (addrinfo const* each = found; each; each = each->ai_next) {
        problem = problemAt(*each);
        if (problem.empty()) {
            break;
        }
    }
    return problem;
}

} // namespace zan::cli
