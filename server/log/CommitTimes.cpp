#include "server/log/CommitTimes.h"

#include <algorithm>

namespace zan::server {

void CommitTimes::succeeded(std::chrono::nanoseconds time) {
    auto const& bounds = CommitFigures::bounds;
    auto const reached = std::ranges::lower_bound(bounds, time);
    auto const index = static_cast<std::size_t>(reached - bounds.begin());
    counts_[index].fetch_add(1, std::memory_order_relaxed);
    nanoseconds_.fetch_add(time.count(), std::memory_order_relaxed);
}

CommitFigures CommitTimes::figures() const {
    CommitFigures figures;
    std::ranges::transform(counts_, figures.counts.begin(),
                           [](auto const& count) { return count.load(std::memory_order_relaxed); });
    figures.total = std::chrono::nanoseconds(nanoseconds_.load(std::memory_order_relaxed));
    figures.failures = failures_.load(std::memory_order_relaxed);
    return figures;
}

} // namespace zan::server
