#include "server/metrics/HttpServer.h"

#include "server/sessions/Sockets.h"

#include <microhttpd.h>

#include <cerrno>
#include <exception>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace zan::server {

namespace {

constexpr unsigned int mostConnections = 32;
constexpr unsigned int secondsWithoutAByte = 5;
constexpr std::size_t bytesPerConnection = 16 * 1024;

HttpAnswer answerSafely(HttpServer::Answer const& answer, std::string const& path) {
    try {
        return answer(path);
    } catch (std::exception const& e) {
        return {500, std::string(e.what()) + "\n"};
    } catch (...) {
        return {500, "unknown exception\n"};
    }
}

MHD_Result reply(MHD_Connection* connection, HttpAnswer const& answer) {
    // The library copies the text and does not change it, but asks for one that it might change.
    MHD_Response* const response = MHD_create_response_from_buffer(
        answer.text.size(), const_cast<char*>(answer.text.data()), MHD_RESPMEM_MUST_COPY);
    if (!response) {
        return MHD_NO;
    }
    MHD_add_response_header(response, MHD_HTTP_HEADER_CONTENT_TYPE, answer.type.c_str());
    if (answer.status == MHD_HTTP_METHOD_NOT_ALLOWED) {
        MHD_add_response_header(response, MHD_HTTP_HEADER_ALLOW, "GET, HEAD");
    }
    MHD_Result const result =
        MHD_queue_response(connection, static_cast<unsigned int>(answer.status), response);
    MHD_destroy_response(response);
    return result;
}

// Called by the library for each request.
MHD_Result handle(void* context, MHD_Connection* connection, char const* path, char const* method,
                  char const*, char const*, std::size_t*, void**) {
    std::string_view const verb(method);
    if (verb != MHD_HTTP_METHOD_GET && verb != MHD_HTTP_METHOD_HEAD) {
        return reply(connection, {MHD_HTTP_METHOD_NOT_ALLOWED, "only GET and HEAD are served\n"});
    }
    return reply(connection, answerSafely(*static_cast<HttpServer::Answer const*>(context), path));
}

} // namespace

class HttpServer::Daemon {
public:
    /// Takes the socket over, also when it throws: the library closes what it was given.
    Daemon(int socket, Answer& answer)
        : daemon_(MHD_start_daemon(
              MHD_USE_AUTO_INTERNAL_THREAD, 0, nullptr, nullptr, &handle, &answer,
              MHD_OPTION_LISTEN_SOCKET, socket, MHD_OPTION_CONNECTION_LIMIT, mostConnections,
              MHD_OPTION_CONNECTION_TIMEOUT, secondsWithoutAByte,
              MHD_OPTION_CONNECTION_MEMORY_LIMIT, bytesPerConnection, MHD_OPTION_END)) {
        if (!daemon_) {
            throw std::runtime_error("the HTTP server cannot be started: " + errorText(errno));
        }
    }
    ~Daemon() { MHD_stop_daemon(daemon_); }
    Daemon(Daemon const&) = delete;
    Daemon& operator=(Daemon const&) = delete;

private:
    MHD_Daemon* const daemon_;
};

HttpServer::HttpServer(ListenAddress const& address, Answer answer)
    : address_(address), answer_(std::move(answer)) {
    int const socket = listenSocket(address.host, address.port);
    address_.port = localPort(socket);
    daemon_ = std::make_unique<Daemon>(socket, answer_);
}

HttpServer::~HttpServer() = default;

} // namespace zan::server
