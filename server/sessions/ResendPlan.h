/// What the counterparty has asked to be sent again, and when it gets it.
#ifndef ZANENGINE_SERVER_SESSIONS_RESENDPLAN_H
#define ZANENGINE_SERVER_SESSIONS_RESENDPLAN_H

#include "server/sessions/NumberRanges.h"

#include <chrono>
#include <cstddef>

namespace zan {
namespace server {

/// QuickFIX answers a resend request at once, with all its messages in memory: it gets one slice
/// after the other, when there is room for it. Requests that overlap are one. What was sent again
/// over this link already comes again after a pause, and at a limited rate, so that nobody makes
/// the session do nothing else. One thread at a time.
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

    void want(NumberRange range) { wanted_.add(range); }
    bool isEmpty() const { return wanted_.isEmpty(); }

    /// Numbers from this one on were not used in this numbering.
    void forgetFrom(int nextOut);

    /// Is there a slice to send now?
    bool isDue(Clock::time_point now);
    /// The slice; it has to be due.
    NumberRange slice();
    /// This much of the slice was sent.
    void sent(NumberRange range, Clock::time_point now);

private:
    bool wasSent() const { return sent_.has(wanted_.front().first); }
    void refill(Clock::time_point now);

    NumberRanges wanted_;
    NumberRanges sent_;
    Clock::time_point again_;
    bool isRepeating_ = false;
    double mayRepeat_ = mostRepeated;
    Clock::time_point refilled_;
};

} // namespace server
} // namespace zan

#endif
