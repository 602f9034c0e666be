/// `zan::Signal`: lets one thread wait for what another one sees, such as a listener the last
/// report on an order.
///
/// Threads: any.
#ifndef ZANENGINE_COMFORT_SIGNAL_H
#define ZANENGINE_COMFORT_SIGNAL_H

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace zan {

/// Raised once and for all: later ones change nothing, so a report that comes twice does no harm.
class Signal {
public:
    Signal() = default;
    Signal(Signal const&) = delete;
    Signal& operator=(Signal const&) = delete;

    void raise() {
        std::lock_guard<std::mutex> const lock(mutex_);
        isRaised_ = true;
        raised_.notify_all();
    }

    /// Returns as soon as it is raised, with true; or with false when it was not in that time. A
    /// counterparty may never answer, so there is no wait without an end.
    [[nodiscard]] bool waitFor(std::chrono::milliseconds patience) {
        std::unique_lock<std::mutex> lock(mutex_);
        return raised_.wait_for(lock, patience, [this] { return isRaised_; });
    }

private:
    std::mutex mutex_;
    std::condition_variable raised_;
    bool isRaised_ = false;
};

} // namespace zan

#endif
