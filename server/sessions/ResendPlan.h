/// What the counterparty has asked to be sent again, and when it gets it.
#ifndef ZANENGINE_SERVER_SESSIONS_RESENDPLAN_H
#define ZANENGINE_SERVER_SESSIONS_RESENDPLAN_H

#include "server/sessions/NumberRanges.h"

#include <chrono>
#include <cstddef>
#include <set>

namespace zan {
namespace server {

/// QuickFIX answers a resend request at once, with all its messages in memory: it gets one slice
/// after the other, when there is room for it. Requests that overlap are one. What was sent again
/// over this link already comes again after a pause, and at a limited rate, so that nobody makes
/// the session do nothing else. One thread at a time.
///
/// A counterparty passes over a gap fill that begins below the number that it expects, wherever
/// that one ends, and does not ask a second time. So a gap is announced whole, whatever the slices
/// are: those end with an application message, or at the `end` of what can be one gap.
class ResendPlan {
public:
    using Clock = std::chrono::steady_clock;

    /// So many numbers, and so many bytes and one message more, are one slice.
    static int const sliceLength = 500;
    static std::size_t const sliceBytes = 1024 * 1024;
    /// So many messages may be sent a further time at once, and so many more with each second.
    static int const mostRepeated = 10000;
    static int const repeatedEachSecond = 2000;

    /// For a new link.
    void clear();

    /// A request: it expects the first of these numbers.
    void want(NumberRange range);
    bool isEmpty() const { return wanted_.isEmpty(); }

    /// A resend request of ours went out under this number over this link.
    void asked(int number);

    /// Numbers from this one on were not used in this numbering.
    void forgetFrom(int nextOut);

    /// Is there a slice to send now?
    bool isDue(Clock::time_point now);
    /// The slice, and the first of its numbers that were not looked at yet; it has to be due.
    NumberRange slice() const;
    int firstToRead() const;
    /// May a gap in front of what comes first be announced up to this number?
    bool isEnd(int last) const { return last >= end(); }
    /// The slice up to this number is but a gap, which goes on: the next slice is longer.
    void gapTo(int last) { gap_ = {wanted_.front().first, last}; }
    /// This much of the slice was sent.
    void sent(NumberRange range, Clock::time_point now);

private:
    using Numbers = std::set<int>;

    static void addTo(Numbers& numbers, int number);
    int end() const;
    bool wasSent() const { return sent_.has(wanted_.front().first); }
    void refill(Clock::time_point now);

    NumberRanges wanted_;
    NumberRanges sent_;
    Numbers begins_; // of requests, in what is wanted
    Numbers asked_;
    bool hasAsked_ = false;
    NumberRange gap_ = {0, -1};
    Clock::time_point again_;
    bool isRepeating_ = false;
    double mayRepeat_ = mostRepeated;
    Clock::time_point refilled_;
};

} // namespace server
} // namespace zan

#endif
