/// Asks an HTTP server over a socket of its own, byte by byte as a test wants it.
#ifndef ZANENGINE_TESTS_SUPPORT_HTTPCLIENT_H
#define ZANENGINE_TESTS_SUPPORT_HTTPCLIENT_H

#include <stdexcept>
#include <string>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

/// An open connection to a port of this machine.
class HttpConnection {
public:
    explicit HttpConnection(int port, std::string const& host = "127.0.0.1")
        : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<std::uint16_t>(port));
        inet_pton(AF_INET, host.c_str(), &address.sin_addr);
        timeval const patience{20, 0};
        setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
        if (connect(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
            close(socket_);
            throw std::runtime_error("nobody listens on " + host + ":" + std::to_string(port));
        }
    }
    HttpConnection(HttpConnection const&) = delete;
    HttpConnection& operator=(HttpConnection const&) = delete;
    ~HttpConnection() { close(socket_); }

    /// False when the other side has closed the connection.
    bool send(std::string const& bytes) const {
        return ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL) ==
               static_cast<ssize_t>(bytes.size());
    }

    /// Everything up to the end of the connection.
    std::string readAll() const {
        std::string text;
        char bytes[4096];
        for (ssize_t count = 0; (count = recv(socket_, bytes, sizeof bytes, 0)) > 0;) {
            text.append(bytes, static_cast<std::size_t>(count));
        }
        return text;
    }

private:
    int const socket_;
};

/// What came back for a request.
struct HttpReply {
    int status = 0;
    std::string head;
    std::string body;
};

inline HttpReply httpRequest(int port, std::string const& method, std::string const& path,
                             std::string const& content = "") {
    HttpConnection const connection(port);
    connection.send(method + " " + path + " HTTP/1.1\r\nHost: here\r\nConnection: close\r\n" +
                    "Content-Length: " + std::to_string(content.size()) + "\r\n\r\n" + content);
    std::string const all = connection.readAll();
    std::size_t const blank = all.find("\r\n\r\n");
    if (all.rfind("HTTP/1.1 ", 0) != 0 || blank == std::string::npos) {
        throw std::runtime_error("no HTTP reply: " + all);
    }
    return {std::stoi(all.substr(9)), all.substr(0, blank), all.substr(blank + 4)};
}

inline HttpReply httpGet(int port, std::string const& path) {
    return httpRequest(port, "GET", path);
}

#endif
