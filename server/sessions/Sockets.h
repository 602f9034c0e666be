/// What the sessions need of the system's sockets.
#ifndef ZANENGINE_SERVER_SESSIONS_SOCKETS_H
#define ZANENGINE_SERVER_SESSIONS_SOCKETS_H

#include <chrono>
#include <string>

namespace zan {
namespace server {

/// A descriptor that becomes readable when another thread calls `ring`.
class WakeUp {
public:
    /// Throws std::runtime_error when the system has no descriptor left.
    WakeUp();
    ~WakeUp();
    WakeUp(WakeUp const&) = delete;
    WakeUp& operator=(WakeUp const&) = delete;

    void ring();
    /// Makes the descriptor quiet again.
    void silence();
    int descriptor() const { return descriptor_; }

private:
    int descriptor_;
};

/// Where a link goes to, and how its socket is set up; 0 and empty mean: as the system does it.
struct SocketTarget {
    std::string host;
    std::string port;
    std::string sourceHost;
    std::string sourcePort;
    bool noDelay = true;
    int sendBuffer = 0;
    int receiveBuffer = 0;
};

/// Connects; throws std::runtime_error with address and reason when that fails, when it takes
/// longer than the timeout, and when `wakeUp` rings. The socket is non-blocking and the caller's.
int connectSocket(SocketTarget const& target, std::chrono::milliseconds timeout, WakeUp& wakeUp);

/// A listening socket; port 0: one that the system picks. Throws std::runtime_error.
int listenSocket(std::string const& address, int port);

/// Makes an accepted socket like a connected one.
void prepareSocket(int socket, SocketTarget const& target);

/// `host:port` of the two ends.
std::string localAddress(int socket);
std::string remoteAddress(int socket);

/// The port that a listening socket has.
int localPort(int socket);

/// The system's words for an error number.
std::string errorText(int error);

} // namespace server
} // namespace zan

#endif
