// How a connection hands what happened to its listeners, on its delivery thread. Everything with a
// plain count is made here, and let go here.
#include "server/engine/Connection.h"

#include "events/ZANAdminMessageEvent.h"
#include "events/ZANAppMessageEvent.h"
#include "events/ZANConnectionStateEvent.h"
#include "server/engine/EngineErrors.h"

#include <algorithm>
#include <array>
#include <exception>

namespace zan::server {

namespace {

// How many ids of the log are looked through at a time when messages are delivered again.
constexpr long redeliveredAtATime = 1000;

constexpr std::array streams = {FixStream::adminIn, FixStream::adminOut, FixStream::appIn,
                                FixStream::appOut, FixStream::resent};

using Marks = std::array<int, streams.size()>;

Marks marksOf(MessageLog const& log, std::string const& subscriber) {
    Marks marks{};
    std::ranges::transform(streams, marks.begin(),
                           [&](FixStream stream) { return log.mark(subscriber, stream); });
    return marks;
}

bool EventKinds::*kindOf(FixEntry const& entry) {
    return isAdmin(entry.stream) ? &EventKinds::admin : &EventKinds::app;
}

counted_ptr<ZANEvent> eventOf(std::string const& connection, FixEntry const& entry,
                              counted_ptr<ZANMessage> const& model) {
    return counted_ptr<ZANEvent>(
        isAdmin(entry.stream) ? static_cast<ZANEvent*>(new ZANAdminMessageEvent(connection, model))
                              : new ZANAppMessageEvent(connection, model));
}

std::string nameOf(FixEntry const& entry) {
    return "message " + std::to_string(entry.id);
}

} // namespace

template <class Call>
void Connection::guarded(std::string const& what, Call call) {
    try {
        call();
    } catch (std::exception const& e) {
        noteListenerFailure(what + ": " + e.what());
    } catch (...) {
        noteListenerFailure(what + ": unknown exception");
    }
}

void Connection::noteListenerFailure(std::string const& text) {
    traffic_.countListenerFailure();
    diary_.listenerTrouble("a listener failed on " + text);
}

void Connection::deliver(Delivery const& delivery) {
    guarded("an event", [&] {
        if (auto const* entry = std::get_if<FixEntry>(&delivery)) {
            deliverMessage(*entry);
        } else if (auto const* state = std::get_if<LinkState>(&delivery)) {
            deliverState(*state);
        } else {
            auto const& errand = std::get<Errand>(delivery);
            errand.run(errand.lastId);
        }
    });
}

void Connection::deliverMessage(FixEntry const& entry) {
    counted_ptr<ZANEvent> const event = eventOf(name(), entry, modelOf(entry, dictionary_));
    guarded(nameOf(entry), [&] { sink_(event); });
    subscribers_.forEach(kindOf(entry), [&](Subscriber const& subscriber) {
        guarded(nameOf(entry), [&] {
            if (isWanted(entry, subscriber)) {
                subscriber.processEvent(event);
            }
        });
    });
}

// A filter that fails must not keep a message from a listener that wants to lose none.
bool Connection::isWanted(FixEntry const& entry, Subscriber const& subscriber) {
    try {
        return !subscriber.sieve || subscriber.sieve->passes(entry);
    } catch (std::exception const& e) {
        diary_.listenerTrouble("a filter failed on " + nameOf(entry) + ": " + e.what());
        return true;
    }
}

void Connection::deliverState(LinkState const& state) {
    counted_ptr<ZANConnectionStateEvent> const event(
        new ZANConnectionStateEvent(name(), state.record()));
    guarded("a state event",
            [&] { sink_(counted_ptr<ZANEvent>(new ZANConnectionStateEvent(*event))); });
    subscribers_.forEach(&EventKinds::state, [&](Subscriber const& subscriber) {
        guarded("a state event", [&] { subscriber.processStateEvent(event); });
    });
}

std::future<void> Connection::redeliver(std::string const& subscriber,
                                        std::shared_ptr<MessageSieve> const& sieve) {
    auto const done = std::make_shared<std::promise<void>>();
    std::future<void> future = done->get_future();
    queue_.push([this, subscriber, sieve, done](long lastId) {
        try {
            if (redeliverUpTo(lastId, subscriber, *sieve)) {
                done->set_value();
            }
        } catch (...) {
            done->set_exception(std::current_exception());
        }
    });
    return future;
}

bool Connection::redeliverUpTo(long lastId, std::string const& subscriber, MessageSieve& sieve) {
    Marks const marks = marksOf(log_, subscriber);
    long next = std::max<long>(std::ranges::min(marks), 0) + 1;
    for (; next <= lastId; next += redeliveredAtATime) {
        std::vector<FixEntry> entries;
        LogQuery query;
        query.ids = {next, std::min(next + redeliveredAtATime - 1, lastId)};
        log_.read(query, [&](FixEntry&& entry) {
            bool const isAbove = entry.id > marks[static_cast<std::size_t>(entry.stream)];
            if (isAbove && isDelivered(entry.origin)) {
                entries.push_back(std::move(entry));
            }
        });
        for (FixEntry const& entry : entries) {
            if (queue_.isDropping()) {
                return false;
            }
            redeliver(entry, sieve);
        }
    }
    return true;
}

void Connection::redeliver(FixEntry const& entry, MessageSieve& sieve) {
    counted_ptr<ZANEvent> const event =
        eventOf(name(), entry, modelOf(entry, dictionary_, Showing::PossiblyLost));
    subscribers_.forEach(kindOf(entry), [&](Subscriber const& subscriber) {
        if (subscriber.sieve.get() == &sieve && isWanted(entry, subscriber)) {
            guarded(nameOf(entry), [&] { subscriber.processEvent(event); });
        }
    });
}

} // namespace zan::server
