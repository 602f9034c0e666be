#include "conformance/ScriptedPeer.h"

#include "conformance/FixText.h"
#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace zan::conformance {

using Clock = std::chrono::steady_clock;

ScriptedPeer::ScriptedPeer() : listener_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (bind(listener_, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
        listen(listener_, 5) != 0) {
        throw Unexpected("no port to listen on");
    }
}

ScriptedPeer::~ScriptedPeer() {
    close();
    ::close(listener_);
}

int ScriptedPeer::port() const {
    sockaddr_in address{};
    socklen_t size = sizeof address;
    getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &size);
    return ntohs(address.sin_port);
}

bool ScriptedPeer::wait(int socket, Clock::time_point deadline) const {
    auto const left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
    pollfd event = {socket, POLLIN, 0};
    return poll(&event, 1, static_cast<int>(std::max<long long>(left, 0))) > 0;
}

bool ScriptedPeer::accept(Patience patience) {
    close();
    if (wait(listener_, Clock::now() + patience)) {
        link_ = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
        // Each write is to be a packet of its own.
        int const on = 1;
        setsockopt(link_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    }
    return hasLink();
}

void ScriptedPeer::write(std::string const& bytes) {
    std::size_t written = 0;
    while (written < bytes.size()) {
        ssize_t const count =
            ::send(link_, bytes.data() + written, bytes.size() - written, MSG_NOSIGNAL);
        if (count < 0) {
            throw Unexpected("the engine has closed the link");
        }
        written += static_cast<std::size_t>(count);
    }
}

void ScriptedPeer::finishWriting() {
    shutdown(link_, SHUT_WR);
}

void ScriptedPeer::close() {
    if (hasLink()) {
        ::close(link_);
    }
    link_ = -1;
    buffer_.clear();
}

void ScriptedPeer::cut() {
    linger const now = {1, 0};
    setsockopt(link_, SOL_SOCKET, SO_LINGER, &now, sizeof now);
    close();
}

ScriptedPeer::Got ScriptedPeer::next(std::string& message, Patience patience) {
    auto const deadline = Clock::now() + patience;
    std::array<char, 65536> bytes{};
    while (!takeMessage(message)) {
        if (!hasLink()) {
            return Got::end;
        }
        if (!wait(link_, deadline)) {
            return Got::nothing;
        }
        ssize_t const count = recv(link_, bytes.data(), bytes.size(), 0);
        if (count <= 0) {
            close();
            return Got::end;
        }
        buffer_.append(bytes.data(), static_cast<std::size_t>(count));
    }
    return Got::message;
}

bool ScriptedPeer::takeMessage(std::string& message) {
    std::string const lengthStart = "\x01"
                                    "9=";
    std::size_t const lengthAt = buffer_.find(lengthStart);
    std::size_t const headEnd = buffer_.find(
        '\x01', lengthAt == std::string::npos ? lengthAt : lengthAt + lengthStart.size());
    if (headEnd == std::string::npos) {
        return false;
    }
    std::size_t const bodyEnd =
        headEnd + 1 + std::strtoul(buffer_.c_str() + lengthAt + lengthStart.size(), nullptr, 10);
    std::size_t const end = bodyEnd + 7;
    if (buffer_.size() < end) {
        return false;
    }
    std::array<char, 16> trailer{};
    std::snprintf(trailer.data(), trailer.size(), "10=%03u\x01",
                  checkSum(buffer_.substr(0, bodyEnd)));
    if (!buffer_.starts_with("8=FIX") || buffer_.compare(bodyEnd, 7, trailer.data()) != 0) {
        throw Unexpected("the engine sent bytes that are no message: " + readable(buffer_));
    }
    message = buffer_.substr(0, end);
    buffer_.erase(0, end);
    return true;
}

} // namespace zan::conformance
