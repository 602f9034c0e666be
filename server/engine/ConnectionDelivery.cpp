// How a connection hands what happened to its listeners, on its delivery thread. Everything with a
// plain count is made here, and let go here.
#include "server/engine/Connection.h"

#include "events/ZANAdminMessageEvent.h"
#include "events/ZANAppMessageEvent.h"
#include "events/ZANConnectionStateEvent.h"
#include "server/engine/Guarded.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <utility>

namespace zan::server {

namespace {

std::string nameOf(FixEntry const& entry) {
    return "message " + std::to_string(entry.id);
}

} // namespace

bool EventKinds::*Connection::kindOf(FixEntry const& entry) {
    return isAdmin(entry.stream) ? &EventKinds::admin : &EventKinds::app;
}

// `subject` gives the text only when it is needed.
template <class Subject, class Call>
void Connection::guarded(Subject const& subject, Call const& call) noexcept {
    callGuarded(call, [&](char const* reason) {
        traffic_.countListenerFailure();
        diary_.listenerTrouble("a listener failed on " + std::string(subject()) + ": " + reason);
    });
}

void Connection::deliver(Delivery const& delivery) {
    if (auto const* entry = std::get_if<FixEntry>(&delivery)) {
        callGuarded([&] { deliverMessage(*entry); },
                    [&](char const* reason) { holdBack(*entry, reason); });
        lastHandled_ = entry->id;
    } else if (auto const* state = std::get_if<LinkState>(&delivery)) {
        guarded([] { return "a state event"; }, [&] { deliverState(*state); });
    } else {
        auto const& task = std::get<Task>(delivery);
        guarded([] { return "an event"; }, [&] { task.run(task.lastId); });
    }
}

void Connection::deliverMessage(FixEntry const& entry) {
    auto const subject = [&] { return nameOf(entry); };
    counted_ptr<ZANEvent> const event = eventOf(entry, Showing::AsStored);
    guarded(subject, [&] { sink_(event); });
    letGo(subscribers_.forEach(kindOf(entry), [&](Subscriber const& subscriber) {
        if (subscriber.stream) {
            deliverLive(entry, event, subscriber);
        } else {
            guarded(subject, [&] { subscriber.processEvent(event); });
        }
    }));
}

counted_ptr<ZANEvent> Connection::eventOf(FixEntry const& entry, Showing showing) const {
    counted_ptr<ZANMessage> const model = modelOf(entry, dictionary_, showing);
    return counted_ptr<ZANEvent>(
        isAdmin(entry.stream) ? static_cast<ZANEvent*>(new ZANAdminMessageEvent(name(), model))
                              : new ZANAppMessageEvent(name(), model));
}

// A listener that has taken itself off and then ended the engine ends after it.
void Connection::letGo(std::vector<Subscribers::Shared> called) {
    if (queue_.isDropping()) {
        std::ranges::move(called, std::back_inserter(endingLast_));
    }
}

std::shared_ptr<void> Connection::takeListeners() {
    std::vector<Subscribers::Shared> all = subscribers_.takeAll();
    std::ranges::move(endingLast_, std::back_inserter(all));
    endingLast_.clear();
    return std::make_shared<std::vector<Subscribers::Shared>>(std::move(all));
}

void Connection::deliverState(LinkState const& state) {
    auto const subject = [] { return "a state event"; };
    counted_ptr<ZANConnectionStateEvent> const event(
        new ZANConnectionStateEvent(name(), state.record()));
    guarded(subject, [&] { sink_(counted_ptr<ZANEvent>(new ZANConnectionStateEvent(*event))); });
    letGo(subscribers_.forEach(&EventKinds::state, [&](Subscriber const& subscriber) {
        guarded(subject, [&] { subscriber.processStateEvent(event); });
    }));
}

} // namespace zan::server
