#include "apps/zan/Interrupt.h"

#include "apps/zan/ExitCodes.h"

#include <pthread.h>
#include <unistd.h>

#include <fcntl.h>
#include <system_error>
#include <utility>

namespace zan::cli {

namespace {

// Sent to the watcher alone, for its end.
constexpr int wakeUp = SIGUSR1;

// What nohup, say, wants to be ignored stays ignored; to wait for it would be to obey it.
bool isIgnored(int signal) {
    struct sigaction present {};
    return sigaction(signal, nullptr, &present) == 0 && present.sa_handler == SIG_IGN;
}

} // namespace

Interrupt::Interrupt() {
    sigemptyset(&signals_);
    for (int const signal : {SIGINT, SIGTERM, SIGHUP}) {
        if (!isIgnored(signal)) {
            sigaddset(&signals_, signal);
        }
    }
    sigaddset(&signals_, wakeUp);
    pthread_sigmask(SIG_BLOCK, &signals_, nullptr);
    // Writing to a pipe that nobody reads fails instead of ending the program out of order.
    std::signal(SIGPIPE, SIG_IGN);
    if (pipe2(pipe_, O_CLOEXEC) != 0) {
        throw std::system_error(errno, std::generic_category(), "no pipe");
    }
    watcher_ = std::thread([this] { watch(); });
}

Interrupt::~Interrupt() {
    isStopping_ = true;
    pthread_kill(watcher_.native_handle(), wakeUp);
    watcher_.join();
    close(pipe_[0]);
    close(pipe_[1]);
}

void Interrupt::watch() {
    for (int signal = 0; sigwait(&signals_, &signal) == 0 && !isStopping_;) {
        if (signal == wakeUp) {
            continue;
        }
        if (happened_.exchange(true)) {
            _exit(static_cast<int>(ExitCode::Interrupted));
        }
        [[maybe_unused]] ssize_t const written = write(pipe_[1], "!", 1);
        wake();
        std::lock_guard const lock(mutex_);
        if (end_) {
            ender_ = std::thread(end_);
        }
    }
}

void Interrupt::check() const {
    if (happened_) {
        throw Interruption();
    }
}

void Interrupt::wait(std::chrono::milliseconds time) {
    std::unique_lock lock(mutex_);
    news_.wait_for(lock, time, [this] { return hasNews_ || happened_; });
    hasNews_ = false;
    lock.unlock();
    check();
}

void Interrupt::wake() {
    std::lock_guard const lock(mutex_);
    hasNews_ = true;
    news_.notify_all();
}

void Interrupt::guard(std::function<void()> const& action, std::function<void()> end) {
    {
        std::lock_guard const lock(mutex_);
        end_ = std::move(end);
    }
    struct Forget {
        Interrupt& interrupt;
        ~Forget() {
            std::thread ender;
            {
                std::lock_guard const lock(interrupt.mutex_);
                interrupt.end_ = nullptr;
                ender = std::move(interrupt.ender_);
            }
            if (ender.joinable()) {
                ender.join();
            }
        }
    } const forget{*this};
    check();
    action();
}

} // namespace zan::cli
