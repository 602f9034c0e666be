#include "server/sessions/ResendPlan.h"

#include <algorithm>
#include <limits>

namespace zan {
namespace server {

namespace {
// Requests that come one after the other, faster than anybody could have read an answer, are
// answered together.
std::chrono::milliseconds const pauseBeforeRepeating(100);
} // namespace

int const ResendPlan::sliceLength;
std::size_t const ResendPlan::sliceBytes;
int const ResendPlan::mostRepeated;
int const ResendPlan::repeatedEachSecond;

void ResendPlan::clear() {
    wanted_.clear();
    sent_.clear();
    isRepeating_ = false;
}

void ResendPlan::forgetFrom(int nextOut) {
    NumberRange const unused = {nextOut, std::numeric_limits<int>::max()};
    wanted_.remove(unused);
    sent_.remove(unused);
}

bool ResendPlan::isDue(Clock::time_point now) {
    if (wanted_.isEmpty())
        return false;
    if (!wasSent())
        return true;
    refill(now);
    isRepeating_ = isRepeating_ || now >= again_;
    return isRepeating_ && mayRepeat_ >= 1;
}

NumberRange ResendPlan::slice() {
    NumberRange slice = wanted_.front();
    int last = std::min(slice.last, sent_.lastLike(slice.first));
    if (wasSent())
        last = std::min(last, slice.first + static_cast<int>(mayRepeat_) - 1);
    slice.last = last - slice.first < sliceLength ? last : slice.first + sliceLength - 1;
    return slice;
}

void ResendPlan::sent(NumberRange range, Clock::time_point now) {
    if (sent_.has(range.first))
        mayRepeat_ -= range.last - range.first + 1;
    sent_.add(range);
    wanted_.remove(range);
    isRepeating_ = isRepeating_ && !wanted_.isEmpty();
    again_ = now + pauseBeforeRepeating;
}

void ResendPlan::refill(Clock::time_point now) {
    std::chrono::duration<double> const passed = now - refilled_;
    mayRepeat_ = std::min<double>(mostRepeated, mayRepeat_ + passed.count() * repeatedEachSecond);
    refilled_ = now;
}

} // namespace server
} // namespace zan
