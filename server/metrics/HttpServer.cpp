#include "server/metrics/HttpServer.h"

#include "server/sessions/Sockets.h"

#include <microhttpd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <exception>
#include <stdexcept>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include <sys/socket.h>

namespace zan::server {

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

// Who comes beyond this takes the place of whoever is connected longest.
constexpr std::size_t mostConnections = 32;
constexpr unsigned int placesForNewOnes = 8;
constexpr unsigned int secondsWithoutAByte = 5;

// From the first byte of a request to the last one of its answer. No connection serves two.
constexpr Clock::duration longestRequest = 10s;

// How soon a request that takes too long is noticed, and the end of the server.
constexpr std::chrono::milliseconds longestWait = 100ms;

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
    MHD_add_response_header(response, MHD_HTTP_HEADER_CONNECTION, "close");
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

/// Who is connected, and since when. What takes too long is cut off; the library then sees its end.
///
/// Threads: the server's.
class OpenConnections {
public:
    static void changed(void* context, MHD_Connection* connection, void**,
                        MHD_ConnectionNotificationCode what) {
        auto& self = *static_cast<OpenConnections*>(context);
        if (what == MHD_CONNECTION_NOTIFY_CLOSED) {
            std::erase_if(self.open_, [=](Open const& each) { return each.which == connection; });
            return;
        }
        auto const* const info =
            MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD);
        if (info) {
            self.open_.push_back({connection, info->connect_fd, Clock::now()});
        }
        if (self.open_.size() > mostConnections) {
            self.cutOffOldest();
        }
    }

    void cutOffLate() {
        auto const latest = Clock::now() - longestRequest;
        for (Open& each : open_) {
            if (each.since <= latest) {
                cutOff(each);
            }
        }
    }

private:
    struct Open {
        MHD_Connection* which;
        int socket;
        Clock::time_point since;
        bool isCutOff = false;
    };

    static void cutOff(Open& connection) {
        if (!std::exchange(connection.isCutOff, true)) {
            shutdown(connection.socket, SHUT_RDWR);
        }
    }

    void cutOffOldest() {
        auto const oldest =
            std::ranges::find_if(open_, [](Open const& each) { return !each.isCutOff; });
        if (oldest != open_.end()) {
            cutOff(*oldest);
        }
    }

    std::vector<Open> open_; // the oldest first
};

class HttpServer::Daemon {
public:
    /// Takes the socket over, also when it throws: the library closes what it was given.
    Daemon(int socket, Answer& answer)
        : daemon_(MHD_start_daemon(MHD_USE_EPOLL, 0, nullptr, nullptr, &handle, &answer,
                                   MHD_OPTION_LISTEN_SOCKET, socket, MHD_OPTION_CONNECTION_LIMIT,
                                   static_cast<unsigned int>(mostConnections) + placesForNewOnes,
                                   MHD_OPTION_CONNECTION_TIMEOUT, secondsWithoutAByte,
                                   MHD_OPTION_CONNECTION_MEMORY_LIMIT, bytesPerConnection,
                                   MHD_OPTION_NOTIFY_CONNECTION, &OpenConnections::changed,
                                   &connections_, MHD_OPTION_END)) {
        if (!daemon_) {
            throw std::runtime_error("the HTTP server cannot be started: " + errorText(errno));
        }
        thread_ = std::thread([this] { serve(); });
    }
    ~Daemon() {
        isEnding_ = true;
        thread_.join();
        MHD_stop_daemon(daemon_);
    }
    Daemon(Daemon const&) = delete;
    Daemon& operator=(Daemon const&) = delete;

private:
    void serve() {
        while (!isEnding_ &&
               MHD_run_wait(daemon_, static_cast<std::int32_t>(longestWait.count())) == MHD_YES) {
            connections_.cutOffLate();
        }
    }

    OpenConnections connections_;
    MHD_Daemon* const daemon_;
    std::atomic<bool> isEnding_ = false;
    std::thread thread_;
};

HttpServer::HttpServer(ListenAddress const& address, Answer answer)
    : address_(address), answer_(std::move(answer)) {
    int const socket = listenSocket(address.host, address.port);
    address_.port = localPort(socket);
    daemon_ = std::make_unique<Daemon>(socket, answer_);
}

HttpServer::~HttpServer() = default;

} // namespace zan::server
