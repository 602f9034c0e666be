/// One turn that threads take after each other, with a limit on how long they wait for it.
///
/// It stands in for `std::timed_mutex`, whose timed lock ThreadSanitizer does not follow. For use
/// with `std::unique_lock` and a deadline.
#ifndef ZANENGINE_SERVER_ENGINE_TIMEDTURN_H
#define ZANENGINE_SERVER_ENGINE_TIMEDTURN_H

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <utility>

namespace zan::server {

class TimedTurn {
public:
    /// False when the turn was not free before the deadline.
    bool try_lock_until(std::chrono::steady_clock::time_point deadline) {
        std::unique_lock lock(mutex_);
        return free_.wait_until(lock, deadline, [this] { return !isTaken_; }) &&
               !std::exchange(isTaken_, true);
    }

    void unlock() {
        {
            std::lock_guard const lock(mutex_);
            isTaken_ = false;
        }
        free_.notify_one();
    }

private:
    std::mutex mutex_;
    std::condition_variable free_;
    bool isTaken_ = false;
};

} // namespace zan::server

#endif
