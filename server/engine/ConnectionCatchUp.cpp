// How a connection treats its guaranteed listeners: the stream of one that fails stops before the
// message, and goes on out of the message log. What the delivery thread does stands here, and what
// operators are told of it.
#include "server/engine/Connection.h"

#include "server/engine/Guarded.h"

#include <algorithm>
#include <array>
#include <exception>
#include <utility>

namespace zan::server {

namespace {

// How many ids of the log are looked through at a time, and how many bytes of messages are held.
constexpr long idsAtATime = 1000;
constexpr std::size_t bytesAtATime = std::size_t{4} << 20;

constexpr std::array streams = {FixStream::adminIn, FixStream::adminOut, FixStream::appIn,
                                FixStream::appOut, FixStream::resent};

using Marks = std::array<int, streams.size()>;

Marks marksOf(MessageLog const& log, std::string const& subscriber) {
    Marks marks{};
    std::ranges::transform(streams, marks.begin(),
                           [&](FixStream stream) { return log.mark(subscriber, stream); });
    return marks;
}

struct Enough {};

// The messages for listeners under these ids, or the first of them. `last` becomes the last id that
// was looked at.
std::vector<FixEntry> messagesOf(MessageLog const& log, long first, long& last) {
    std::vector<FixEntry> entries;
    std::size_t bytes = 0;
    LogQuery query;
    query.ids = {first, last};
    try {
        log.read(query, [&](FixEntry&& entry) {
            if (bytes > bytesAtATime) {
                last = entries.back().id;
                throw Enough();
            }
            if (isDelivered(entry.origin)) {
                bytes += entry.text.size();
                entries.push_back(std::move(entry));
            }
        });
    } catch (Enough const&) {
        // The rest comes the next time.
    }
    return entries;
}

std::string pauseText(std::chrono::milliseconds pause) {
    return std::to_string(pause.count()) + " ms";
}

} // namespace

// A filter that fails must not keep a message from a listener that wants to lose none.
bool Connection::isWanted(FixEntry const& entry, GuaranteedStream& stream) {
    try {
        return stream.filter().passes(entry);
    } catch (std::exception const& e) {
        diary_.listenerTrouble("a filter failed on message " + std::to_string(entry.id) + ": " +
                               e.what());
        return true;
    }
}

void Connection::deliverLive(FixEntry const& entry, counted_ptr<ZANEvent> const& event,
                             Subscriber const& subscriber) noexcept {
    GuaranteedStream& stream = *subscriber.stream;
    if (stream.isBehind()) {
        return;
    }
    stream.show(entry.id);
    callGuarded(
        [&] {
            if (isWanted(entry, stream)) {
                subscriber.processEvent(event);
            }
        },
        [&](char const* reason) { stopBefore(entry, stream, reason, true); });
}

// A message that could not be delivered at all: plain listeners have lost it.
void Connection::holdBack(FixEntry const& entry, char const* reason) {
    subscribers_.visitStreams([&](GuaranteedStream& stream) {
        if (!stream.isBehind() && stream.lastShown() < entry.id) {
            stream.stopBefore(entry, reason, false, GuaranteedStream::Clock::now());
        }
    });
    traffic_.countListenerFailure();
    diary_.listenerTrouble("message " + std::to_string(entry.id) +
                           " could not be delivered: " + reason);
}

void Connection::stopBefore(FixEntry const& entry, GuaranteedStream& stream, char const* reason,
                            bool wasShown) {
    auto const pause = stream.stopBefore(entry, reason, wasShown, GuaranteedStream::Clock::now());
    traffic_.countListenerFailure();
    diary_.listenerTrouble("a listener failed on message " + std::to_string(entry.id) + ": " +
                           reason + "; \"" + stream.name() + "\" gets it again in " +
                           pauseText(pause) + ", and nothing behind it before");
    watch_.setListenerTrouble(listenerFailures());
}

void Connection::settled(GuaranteedStream const& stream) {
    diary_.listenerGoesOn(stream.name());
    watch_.setListenerTrouble(listenerFailures());
}

std::string Connection::listenerFailures() const {
    std::string text;
    subscribers_.visitStreams([&](GuaranteedStream const& stream) {
        if (auto const failure = stream.failure()) {
            text += (text.empty() ? "" : "; ") + ("the guaranteed listener \"" + stream.name()) +
                    "\" fails on message " + std::to_string(failure->id) + ": " + failure->reason;
        }
    });
    return text;
}

// A mark at the failed message, or beyond it, means that the application has done with it.
void Connection::maintainStreams() {
    bool isDue = false;
    auto const now = GuaranteedStream::Clock::now();
    subscribers_.visitStreams([&](GuaranteedStream& stream) {
        auto const failure = stream.failure();
        if (failure && log_.mark(stream.name(), failure->stream) >= failure->id) {
            stream.hurry(now);
        }
        isDue = isDue || stream.isDue(now);
    });
    watch_.setListenerTrouble(listenerFailures());
    if (isDue) {
        queueCatchUp();
    }
}

void Connection::queueCatchUp() {
    if (!isCatchUpQueued_.exchange(true)) {
        queue_.push([this](long) {
            isCatchUpQueued_ = false;
            catchUpAll();
        });
    }
}

// One step for each, so that what happens meanwhile is delivered in between.
void Connection::catchUpAll() {
    std::vector<Subscribers::Shared> behind = subscribers_.guaranteed();
    bool isMore = false;
    for (Subscribers::Shared const& subscriber : behind) {
        GuaranteedStream& stream = *subscriber->stream;
        if (stream.isBehind() && stream.isDue(GuaranteedStream::Clock::now())) {
            try {
                catchUp(*subscriber);
            } catch (std::exception const& e) {
                stream.postpone(GuaranteedStream::Clock::now());
                diary_.listenerTrouble("\"" + stream.name() +
                                       "\" cannot get its messages: " + e.what());
            }
            isMore = isMore || stream.isDue(GuaranteedStream::Clock::now());
        }
    }
    letGo(std::move(behind));
    if (isMore) {
        queueCatchUp();
    }
}

// The next messages out of the log for a listener that is behind. Throws `LogFailure`.
void Connection::catchUp(Subscriber const& subscriber) {
    GuaranteedStream& stream = *subscriber.stream;
    long const newest = std::max(lastHandled_, stream.shownUpTo());
    long last = std::min(stream.next() + idsAtATime - 1, newest);
    Marks const marks = marksOf(log_, stream.name());
    for (FixEntry const& entry : messagesOf(log_, stream.next(), last)) {
        bool const isShown = entry.id <= stream.shownUpTo();
        bool const isMarked = entry.id <= marks[static_cast<std::size_t>(entry.stream)];
        bool const isDone = isShown && isMarked;
        if (queue_.isDropping() || (!isDone && !show(entry, isShown, subscriber))) {
            return;
        }
        if (stream.advanceTo(entry.id + 1)) {
            settled(stream);
        }
    }
    if (stream.advanceTo(last + 1)) {
        settled(stream);
    }
    if (last >= newest) {
        stream.catchUp();
    }
}

// False when the listener failed on it.
bool Connection::show(FixEntry const& entry, bool isPossiblyLost, Subscriber const& subscriber) {
    GuaranteedStream& stream = *subscriber.stream;
    bool isTaken = true;
    subscribers_.call(subscriber, kindOf(entry), [&] {
        bool wasShown = isPossiblyLost;
        isTaken = callGuarded(
            [&] {
                if (isWanted(entry, stream)) {
                    counted_ptr<ZANEvent> const event =
                        eventOf(entry, isPossiblyLost ? Showing::PossiblyLost : Showing::AsStored);
                    wasShown = true;
                    subscriber.processEvent(event);
                }
            },
            [&](char const* reason) { stopBefore(entry, stream, reason, wasShown); });
    });
    return isTaken;
}

std::future<void> Connection::redeliver(std::shared_ptr<MessageFilter> const& filter) {
    auto const done = std::make_shared<std::promise<void>>();
    std::future<void> future = done->get_future();
    queue_.push([this, filter, done](long lastId) {
        try {
            if (redeliverUpTo(lastId, *filter)) {
                done->set_value();
            }
        } catch (...) {
            done->set_exception(std::current_exception());
        }
    });
    return future;
}

bool Connection::redeliverUpTo(long lastId, MessageFilter const& filter) {
    lastHandled_ = std::max(lastHandled_, lastId);
    std::vector<Subscribers::Shared> subscribers = subscribers_.guaranteed(&filter);
    for (Subscribers::Shared const& subscriber : subscribers) {
        startOver(*subscriber, lastId);
    }
    letGo(std::move(subscribers));
    return !queue_.isDropping();
}

// All of it, or as far as the listener takes it.
void Connection::startOver(Subscriber const& subscriber, long lastId) {
    GuaranteedStream& stream = *subscriber.stream;
    bool const wasBehind = stream.isBehind();
    long const lowest = std::ranges::min(marksOf(log_, stream.name()));
    stream.startOver(std::max(lowest, 0L) + 1, lastId);
    try {
        while (stream.isDue(GuaranteedStream::Clock::now()) && !queue_.isDropping()) {
            catchUp(subscriber);
        }
    } catch (std::exception const&) {
        wasBehind ? stream.postpone(GuaranteedStream::Clock::now()) : stream.catchUp();
        throw;
    }
}

} // namespace zan::server
