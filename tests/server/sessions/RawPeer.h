/// A counterparty of bare bytes: what it says, and when, is all up to the test.
#ifndef ZANENGINE_TESTS_SERVER_SESSIONS_RAWPEER_H
#define ZANENGINE_TESTS_SERVER_SESSIONS_RAWPEER_H

#include "server/sessions/FixFramer.h"
#include "server/sessions/FixScanner.h"

#include <cerrno>
#include <cstdio>
#include <ctime>
#include <string>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

/// Listens on loopback, or connects to a port of it. Waiting operations give up after five seconds.
class RawPeer {
public:
    explicit RawPeer(std::string sender = "THEM", std::string target = "US")
        : sender_(std::move(sender)), target_(std::move(target)),
          listener_(socket(AF_INET, SOCK_STREAM, 0)) {
        sockaddr_in address = loopback(0);
        bind(listener_, reinterpret_cast<sockaddr*>(&address), sizeof address);
        listen(listener_, 5);
    }
    ~RawPeer() {
        drop();
        close(listener_);
    }
    RawPeer(RawPeer const&) = delete;
    RawPeer& operator=(RawPeer const&) = delete;

    int port() const {
        sockaddr_in address{};
        socklen_t size = sizeof address;
        getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &size);
        return ntohs(address.sin_port);
    }

    /// A small buffer soon lets a sender feel that nobody reads.
    bool accept(int receiveBuffer = 0) {
        if (receiveBuffer > 0)
            setsockopt(listener_, SOL_SOCKET, SO_RCVBUF, &receiveBuffer, sizeof receiveBuffer);
        drop();
        if (isReady(listener_))
            link_ = ::accept(listener_, nullptr, nullptr);
        return link_ >= 0;
    }

    bool connect(int port) {
        drop();
        link_ = socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address = loopback(port);
        return ::connect(link_, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
    }

    void drop() {
        if (link_ >= 0)
            close(link_);
        link_ = -1;
        framer_.clear();
    }

    /// A whole message out of its body, with the next sequence number; `|` becomes SOH.
    std::string framed(std::string const& type, std::string const& body) {
        std::string inner = "35=" + type + "|34=" + std::to_string(number++) + "|49=" + sender_ +
                            "|52=" + time() + "|56=" + target_ + "|" + body;
        std::string message = "8=FIX.4.4|9=" + std::to_string(inner.size()) + "|" + inner;
        unsigned sum = 0;
        for (char& each : message) {
            if (each == '|')
                each = '\x01';
            sum += static_cast<unsigned char>(each);
        }
        char trailer[8];
        std::snprintf(trailer, sizeof trailer, "10=%03u\x01", sum % 256);
        return message + trailer;
    }

    void sendBytes(std::string const& bytes) {
        ::send(link_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    }
    void send(std::string const& type, std::string const& body) { sendBytes(framed(type, body)); }

    /// The next message of that type with SOH as `|`; others are passed over. Empty: none came.
    std::string waitFor(std::string const& type) {
        std::string message;
        std::string fault;
        for (;;) {
            zan::server::FixFramer::Result const result = framer_.next(message, fault);
            if (result == zan::server::FixFramer::Result::message &&
                zan::server::fixValue(message, 35) == type)
                return readable(message);
            if (result == zan::server::FixFramer::Result::incomplete && !readMore())
                return {};
        }
    }

    /// Is there anything to read right now?
    bool hasBytes() const {
        char byte = 0;
        return recv(link_, &byte, 1, MSG_DONTWAIT | MSG_PEEK) > 0;
    }

    /// Waits for the other side to close the link.
    bool waitForEnd() {
        while (readMore()) {
        }
        char byte = 0;
        return recv(link_, &byte, 1, MSG_DONTWAIT) == 0 || errno == ECONNRESET;
    }

    /// Takes a Logon and answers it.
    bool logOn() {
        if (!accept() || waitFor("A").empty())
            return false;
        send("A", "98=0|108=5|");
        return true;
    }

    int number = 1;

private:
    static sockaddr_in loopback(int port) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        address.sin_port = htons(static_cast<std::uint16_t>(port));
        return address;
    }

    static bool isReady(int socket) {
        pollfd event = {socket, POLLIN, 0};
        return poll(&event, 1, 5000) > 0;
    }

    static std::string readable(std::string message) {
        for (char& each : message)
            if (each == '\x01')
                each = '|';
        return message;
    }

    static std::string time() {
        std::time_t const seconds = std::time(nullptr);
        std::tm parts{};
        gmtime_r(&seconds, &parts);
        char text[32];
        std::strftime(text, sizeof text, "%Y%m%d-%H:%M:%S", &parts);
        return text;
    }

    bool readMore() {
        char bytes[65536];
        if (link_ < 0 || !isReady(link_))
            return false;
        ssize_t const count = recv(link_, bytes, sizeof bytes, 0);
        if (count > 0)
            framer_.append(bytes, static_cast<std::size_t>(count));
        return count > 0;
    }

    std::string const sender_;
    std::string const target_;
    int listener_;
    int link_ = -1;
    zan::server::FixFramer framer_;
};

#endif
