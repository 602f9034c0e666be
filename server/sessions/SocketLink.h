/// The open link of a session: writes that never block, reads for one thread.
#ifndef ZANENGINE_SERVER_SESSIONS_SOCKETLINK_H
#define ZANENGINE_SERVER_SESSIONS_SOCKETLINK_H

#include "server/sessions/Sockets.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <string>

namespace zan {
namespace server {

/// Any thread may write, wait for room and ask for the end; the rest is for the session's thread.
///
/// A write goes straight to the socket; what the counterparty does not take is kept in a backlog
/// that the session's thread sends on. So a counterparty that does not read blocks nobody.
class SocketLink {
public:
    /// With more than this waiting there is no room for messages of the application ...
    static std::size_t const roomLimit = 4 * 1024 * 1024;
    /// ... and where more than this waits, which the session's own messages may use, a further
    /// write drops the link. One write may be as large as it is.
    static std::size_t const hardLimit = 8 * 1024 * 1024;

    ~SocketLink();

    /// Takes the socket over.
    void open(int socket);
    /// Closes it; `politely` lets the counterparty read what was sent last.
    void close(bool politely);

    /// False when the link is closed or about to be.
    bool write(std::string const& bytes);
    /// How many bytes wait for the counterparty to take them.
    std::size_t backlog() const;
    /// False when there is no room before the deadline, or no link.
    bool waitForRoom(std::chrono::steady_clock::time_point deadline);
    bool hasRoom() { return waitForRoom(std::chrono::steady_clock::time_point()); }
    /// Ends the link soon: the session's thread wakes up and finds it ending.
    void end();
    bool ending() const { return ending_.load(std::memory_order_acquire); }

    /// Sleeps until there is something to do, at most for `timeout`; true when there is something
    /// to read.
    bool waitForWork(bool reading, std::chrono::milliseconds timeout);
    /// Reads what is there: > 0 bytes, 0: nothing now, < 0: the link is at its end, see `fault`.
    long read(char* bytes, std::size_t count);
    /// Why the link came to its end; empty when it was closed in order.
    std::string fault() const;

    WakeUp& wakeUp() { return wakeUp_; }

private:
    void flush();
    void keep(std::string const& bytes, std::size_t written);
    std::size_t writeNow(char const* bytes, std::size_t count);
    void endWith(std::string const& fault);
    bool hasBacklog() const;
    void waitForItsEnd();

    mutable std::mutex mutex_;
    std::condition_variable room_;
    std::string backlog_;
    std::size_t backlogBegin_ = 0;
    std::string fault_;
    std::atomic<bool> ending_{true};
    int socket_ = -1;
    WakeUp wakeUp_;
};

} // namespace server
} // namespace zan

#endif
