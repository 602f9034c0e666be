#include "apps/zan/Progress.h"

#include "apps/zan/Terminal.h"

#include <algorithm>
#include <iostream>
#include <utility>

#include <unistd.h>

namespace zan::cli {

namespace {

// Results on the same terminal would be torn apart by the line.
bool isWanted() {
    return isTerminal(STDERR_FILENO) && !isTerminal(STDOUT_FILENO);
}

constexpr std::chrono::milliseconds patience{500};

} // namespace

Progress::Progress(std::string done, std::size_t total)
    : done_(std::move(done)), total_(std::max<std::size_t>(total, 1)), isShown_(isWanted()),
      next_(std::chrono::steady_clock::now() + patience) {}

Progress::~Progress() {
    if (hasLine_) {
        std::cerr << "\r\x1b[K" << std::flush;
    }
}

void Progress::step(std::size_t steps) {
    steps_ += steps;
    auto const now = std::chrono::steady_clock::now();
    if (isShown_ && now >= next_) {
        next_ = now + patience / 5;
        hasLine_ = true;
        std::cerr << '\r' << steps_ * 100 / total_ << " % " << done_ << "\x1b[K" << std::flush;
    }
}

} // namespace zan::cli
