/// A lock that nobody holds on to while another one has waited for long, and with a limit on the
/// wait.
#ifndef ZANENGINE_SERVER_SESSIONS_FAIRLOCK_H
#define ZANENGINE_SERVER_SESSIONS_FAIRLOCK_H

#include <chrono>
#include <condition_variable>
#include <list>
#include <mutex>

namespace zan {
namespace server {

/// Whoever comes first gets it, but for a thread that comes when it is free just then: to wake
/// another one costs more than a short piece of work. Who has waited for a millisecond is passed
/// over no more. Any thread.
class FairLock {
public:
    using Clock = std::chrono::steady_clock;

    void lock() { lockUntil(Clock::time_point::max()); }
    /// False when it was not free before the deadline.
    bool lockUntil(Clock::time_point deadline);
    void unlock();

private:
    struct Waiter {
        std::condition_variable turn;
        Clock::time_point since;
        bool isOwner = false;
    };

    bool waitUntil(Waiter& waiter, Clock::time_point deadline, std::unique_lock<std::mutex>& lock);

    std::mutex mutex_;
    std::list<Waiter*> waiting_;
    bool isTaken_ = false;
};

} // namespace server
} // namespace zan

#endif
