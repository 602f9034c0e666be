/// How long commits to a log took, and how many failed.
///
/// Threads: any. Counting takes no lock and waits for nobody.
#ifndef ZANENGINE_SERVER_LOG_COMMITTIMES_H
#define ZANENGINE_SERVER_LOG_COMMITTIMES_H

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>

namespace zan::server {

/// What was counted, at one moment.
struct CommitFigures {
    /// The upper ends of all classes but the last, which has none.
    static constexpr std::array<std::chrono::microseconds, 12> bounds = {{
        std::chrono::microseconds(25),
        std::chrono::microseconds(50),
        std::chrono::microseconds(100),
        std::chrono::microseconds(250),
        std::chrono::microseconds(500),
        std::chrono::microseconds(1'000),
        std::chrono::microseconds(2'500),
        std::chrono::microseconds(5'000),
        std::chrono::microseconds(10'000),
        std::chrono::microseconds(50'000),
        std::chrono::microseconds(250'000),
        std::chrono::microseconds(1'000'000),
    }};

    /// How many commits took up to each bound, and more than the last; not cumulative.
    std::array<std::uint64_t, bounds.size() + 1> counts{};
    std::chrono::nanoseconds total{};
    std::uint64_t failures = 0;
};

class CommitTimes {
public:
    void succeeded(std::chrono::nanoseconds time);
    void failed() { failures_.fetch_add(1, std::memory_order_relaxed); }

    CommitFigures figures() const;

private:
    std::array<std::atomic<std::uint64_t>, CommitFigures::bounds.size() + 1> counts_{};
    std::atomic<std::int64_t> nanoseconds_{0};
    std::atomic<std::uint64_t> failures_{0};
};

} // namespace zan::server

#endif
