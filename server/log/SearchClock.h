/// How long a search may still take.
#ifndef ZANENGINE_SERVER_LOG_SEARCHCLOCK_H
#define ZANENGINE_SERVER_LOG_SEARCHCLOCK_H

#include <chrono>

namespace zan::server {

/// Time counts while a statement is stepped. Threads: one at a time.
class SearchClock {
public:
    using Clock = std::chrono::steady_clock;

    void start(Clock::time_point deadline) {
        deadline_ = deadline;
        isRunning_ = true;
    }
    void stop() { isRunning_ = false; }
    bool isOver() const { return isRunning_ && Clock::now() > deadline_; }

private:
    Clock::time_point deadline_;
    bool isRunning_ = false;
};

} // namespace zan::server

#endif
