/// How one guaranteed listener stands on one connection.
///
/// As long as it takes what it gets it is up to date, and gets messages as they happen. When it
/// fails on one its stream stops before that message: what comes then is not for it, until it has
/// got everything from that message on out of the message log.
///
/// Threads: the delivery thread of the connection changes it; `failure` and `isDue` are for any.
#ifndef ZANENGINE_SERVER_ENGINE_GUARANTEEDSTREAM_H
#define ZANENGINE_SERVER_ENGINE_GUARANTEEDSTREAM_H

#include "server/engine/MessageFilter.h"
#include "server/sessions/FixSessionStore.h"

#include <chrono>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace zan::server {

/// What a listener failed on, and how often.
struct StreamFailure {
    long id = 0;
    FixStream stream = FixStream::adminIn;
    int times = 0;
    std::string reason;
};

class GuaranteedStream {
public:
    using Clock = std::chrono::steady_clock;

    /// A message that failed comes again after the first of these, and each time after twice as
    /// long, up to the second.
    static constexpr std::chrono::milliseconds shortestPause{250};
    static constexpr std::chrono::milliseconds longestPause{30'000};

    /// The name is that under which the marks are kept.
    GuaranteedStream(std::string name, std::shared_ptr<MessageFilter> filter);

    std::string const& name() const { return name_; }
    MessageFilter& filter() const { return *filter_; }

    // For the delivery thread.

    /// Whether it gets its messages out of the log.
    bool isBehind() const { return next_ > 0; }

    /// The message that is to come next, when it is behind.
    long next() const { return next_; }

    /// Up to here the listener may have had the messages: they come only above the marks, and as
    /// possibly lost.
    long shownUpTo() const { return shownUpTo_; }

    /// The listener is about to get this message, as it happens.
    void show(long id) { lastShown_ = id; }
    long lastShown() const { return lastShown_; }

    /// The listener has to get this message, and those behind it, out of the log. `wasShown`: it
    /// has had it and failed. Returns the pause. Without memory the reason is left out.
    std::chrono::milliseconds stopBefore(FixEntry const& entry, std::string const& reason,
                                         bool wasShown, Clock::time_point now) noexcept;

    /// What lies above the marks has to come again: from `next` on, as far as `last`, which is the
    /// newest so far. Of a stream that is behind already what the listener has not had stays new.
    void startOver(long next, long last);

    /// Everything before `next` is done. True when that settles a failure.
    bool advanceTo(long next);

    /// Nothing can be read now: it goes on after a pause.
    void postpone(Clock::time_point now);

    /// From now on the listener gets messages as they happen.
    void catchUp();

    // For any thread.

    std::optional<StreamFailure> failure() const;

    /// Ends the pause.
    void hurry(Clock::time_point now);

    /// Whether a stream that is behind may go on: the pause is over.
    bool isDue(Clock::time_point now) const;

private:
    std::string const name_;
    std::shared_ptr<MessageFilter> const filter_;
    long next_ = 0;
    long shownUpTo_ = 0;
    long lastShown_ = 0;
    mutable std::mutex mutex_;
    std::optional<StreamFailure> failure_;
    std::optional<Clock::time_point> dueAt_;
};

} // namespace zan::server

#endif
