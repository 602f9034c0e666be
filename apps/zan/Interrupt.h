/// Ctrl-C and requests to end, which the program obeys in order: what it has is printed, sessions
/// are logged out. A second one ends it at once.
///
/// Threads: any.
#ifndef ZANENGINE_APPS_ZAN_INTERRUPT_H
#define ZANENGINE_APPS_ZAN_INTERRUPT_H

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <functional>
#include <mutex>
#include <thread>

namespace zan::cli {

class Interrupt {
public:
    /// To be made before there are other threads: they inherit that the signals are not theirs.
    Interrupt();
    ~Interrupt();
    Interrupt(Interrupt const&) = delete;
    Interrupt& operator=(Interrupt const&) = delete;

    bool happened() const { return happened_; }

    /// Throws `Interruption` when it happened.
    void check() const;

    /// Waits until there is news, for this time at most. Throws `Interruption`.
    void wait(std::chrono::milliseconds time);

    /// There is news: `wait` returns, also the next one when none is waiting.
    void wake();

    /// Readable once it happened; for `poll`.
    int descriptor() const { return pipe_[0]; }

    /// Runs `action`; when it is interrupted meanwhile, `end` is called on another thread so that
    /// the action can return early.
    void guard(std::function<void()> const& action, std::function<void()> end);

private:
    void watch();

    sigset_t signals_{};
    int pipe_[2] = {-1, -1};
    std::atomic<bool> happened_ = false;
    std::atomic<bool> isStopping_ = false;
    std::mutex mutex_;
    std::condition_variable news_;
    bool hasNews_ = false;
    std::function<void()> end_;
    std::thread ender_;
    std::thread watcher_;
};

} // namespace zan::cli

#endif
