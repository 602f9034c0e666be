/// A small HTTP server for a few pages of plain text.
///
/// One thread of its own serves all clients by turns, so a client that sends or reads nothing holds
/// up nobody. A connection serves one request. Their number, their memory, their time without a
/// byte and their time altogether are bounded: whoever takes too long is cut off, and also whoever
/// is connected longest when too many are.
///
/// Threads: made and ended by its owner.
#ifndef ZANENGINE_SERVER_METRICS_HTTPSERVER_H
#define ZANENGINE_SERVER_METRICS_HTTPSERVER_H

#include "server/metrics/ListenAddress.h"

#include <functional>
#include <memory>
#include <string>

namespace zan::server {

struct HttpAnswer {
    int status = 200;
    std::string text;
    std::string type = "text/plain; charset=utf-8";
};

class HttpServer {
public:
    /// Makes the answer to GET and HEAD of a path, on the server's thread. What it throws becomes
    /// an answer with status 500. Other methods never reach it.
    using Answer = std::function<HttpAnswer(std::string const& path)>;

    /// Listens from here on. Throws std::runtime_error that names the address and the reason.
    HttpServer(ListenAddress const& address, Answer answer);

    /// Ends all connections, then the thread; an answer that is being made is waited for.
    ~HttpServer();
    HttpServer(HttpServer const&) = delete;
    HttpServer& operator=(HttpServer const&) = delete;

    /// Where it listens; the port is the one that the system picked, where it was to pick one.
    ListenAddress const& address() const { return address_; }

private:
    class Daemon;

    ListenAddress address_;
    Answer answer_;
    std::unique_ptr<Daemon> daemon_;
};

} // namespace zan::server

#endif
