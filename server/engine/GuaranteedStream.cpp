#include "server/engine/GuaranteedStream.h"

#include <algorithm>
#include <new>
#include <utility>

namespace zan::server {

namespace {

std::chrono::milliseconds pauseAfter(int failures) {
    auto pause = GuaranteedStream::shortestPause;
    for (int i = 1; i < failures && pause < GuaranteedStream::longestPause; ++i) {
        pause *= 2;
    }
    return std::min(pause, GuaranteedStream::longestPause);
}

} // namespace

GuaranteedStream::GuaranteedStream(std::string name, std::shared_ptr<MessageFilter> filter)
    : name_(std::move(name)), filter_(std::move(filter)) {}

std::chrono::milliseconds GuaranteedStream::stopBefore(FixEntry const& entry,
                                                       std::string const& reason, bool wasShown,
                                                       Clock::time_point now) noexcept {
    next_ = entry.id;
    shownUpTo_ = std::max(shownUpTo_, wasShown ? entry.id : entry.id - 1);
    std::lock_guard const lock(mutex_);
    if (!failure_ || failure_->id != entry.id) {
        failure_.emplace();
        failure_->id = entry.id;
        failure_->stream = entry.stream;
    }
    ++failure_->times;
    auto const pause = pauseAfter(failure_->times);
    dueAt_ = now + pause;
    try {
        failure_->reason = reason;
    } catch (std::bad_alloc const&) {
        failure_->reason.clear();
    }
    return pause;
}

void GuaranteedStream::startOver(long next, long last) {
    if (isBehind()) {
        next_ = std::min(next_, next);
    } else {
        next_ = next;
        shownUpTo_ = last;
    }
    std::lock_guard const lock(mutex_);
    dueAt_ = Clock::now();
}

bool GuaranteedStream::advanceTo(long next) {
    next_ = next;
    std::lock_guard const lock(mutex_);
    bool const isSettled = failure_ && failure_->id < next;
    if (isSettled) {
        failure_.reset();
        dueAt_ = Clock::now();
    }
    return isSettled;
}

void GuaranteedStream::postpone(Clock::time_point now) {
    std::lock_guard const lock(mutex_);
    dueAt_ = now + pauseAfter(failure_ ? failure_->times : 1);
}

void GuaranteedStream::catchUp() {
    next_ = shownUpTo_ = 0;
    std::lock_guard const lock(mutex_);
    failure_.reset();
    dueAt_.reset();
}

std::optional<StreamFailure> GuaranteedStream::failure() const {
    std::lock_guard const lock(mutex_);
    return failure_;
}

void GuaranteedStream::hurry(Clock::time_point now) {
    std::lock_guard const lock(mutex_);
    if (dueAt_) {
        dueAt_ = std::min(*dueAt_, now);
    }
}

bool GuaranteedStream::isDue(Clock::time_point now) const {
    std::lock_guard const lock(mutex_);
    return dueAt_ && *dueAt_ <= now;
}

} // namespace zan::server
