#include "server/sessions/ResendPlan.h"

#include <algorithm>
#include <limits>

namespace zan {
namespace server {

namespace {
// Requests that come one after the other, faster than anybody could have read an answer, are
// answered together.
std::chrono::milliseconds const pauseBeforeRepeating(100);

std::size_t const mostNumbers = 64;
} // namespace

int const ResendPlan::sliceLength;
std::size_t const ResendPlan::sliceBytes;
int const ResendPlan::mostRepeated;
int const ResendPlan::repeatedEachSecond;

void ResendPlan::clear() {
    wanted_.clear();
    sent_.clear();
    begins_.clear();
    asked_.clear();
    hasAsked_ = false;
    gap_ = {0, -1};
    isRepeating_ = false;
}

void ResendPlan::want(NumberRange range) {
    wanted_.add(range);
    addTo(begins_, range.first);
}

// Whoever gets a request of ours out of its order answers it at once, and may not keep it like the
// messages around it: having taken those it expects this number. With the first one of a link this
// is no matter: it follows the Logon, and what is missing from there on is asked for anew.
void ResendPlan::asked(int number) {
    if (hasAsked_)
        addTo(asked_, number);
    hasAsked_ = true;
}

void ResendPlan::addTo(Numbers& numbers, int number) {
    numbers.insert(number);
    if (numbers.size() > mostNumbers)
        numbers.erase(numbers.begin());
}

void ResendPlan::forgetFrom(int nextOut) {
    NumberRange const unused = {nextOut, std::numeric_limits<int>::max()};
    wanted_.remove(unused);
    sent_.remove(unused);
    begins_.erase(begins_.lower_bound(nextOut), begins_.end());
    asked_.erase(asked_.lower_bound(nextOut), asked_.end());
    if (gap_.last >= nextOut)
        gap_ = {0, -1};
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

NumberRange ResendPlan::slice() const {
    int const length =
        wasSent() ? std::min(int{sliceLength}, static_cast<int>(mayRepeat_)) : sliceLength;
    return {wanted_.front().first, std::min(end(), firstToRead() + length - 1)};
}

int ResendPlan::firstToRead() const {
    int const first = wanted_.front().first;
    return first == gap_.first ? std::max(first, gap_.last + 1) : first;
}

int ResendPlan::end() const {
    NumberRange const front = wanted_.front();
    int end = front.last;
    for (Numbers const* const numbers : {&begins_, &asked_}) {
        auto const next = numbers->upper_bound(front.first);
        if (next != numbers->end())
            end = std::min(end, *next - 1);
    }
    return end;
}

void ResendPlan::sent(NumberRange range, Clock::time_point now) {
    if (sent_.has(range.first))
        mayRepeat_ -= range.last - range.first + 1;
    sent_.add(range);
    wanted_.remove(range);
    begins_.erase(begins_.begin(), begins_.upper_bound(range.last));
    gap_ = {0, -1};
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
