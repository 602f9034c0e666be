#include "conformance/FaultRelay.h"

#include "events/ZANAdminMessageEvent.h"
#include "events/ZANAppMessageEvent.h"

#include <exception>
#include <thread>
#include <utility>

namespace zan::conformance {

EventTarget::~EventTarget() = default;

FaultRelay::FaultRelay(std::shared_ptr<FaultScript const> script, std::string prefix,
                       std::shared_ptr<EventTarget> target)
    : script_(std::move(script)), prefix_(std::move(prefix)), target_(std::move(target)) {}

counted_ptr<ZANEvent> FaultRelay::renamed(ZANEvent const& event) const {
    std::string const name = prefix_ + event.getConnectionName();
    return event.isAdmin()
               ? counted_ptr<ZANEvent>(new ZANAdminMessageEvent(name, event.getMessage()))
               : counted_ptr<ZANEvent>(new ZANAppMessageEvent(name, event.getMessage()));
}

FaultRelay::Road& FaultRelay::roadOf(std::string const& connection) {
    std::lock_guard const lock(mutex_);
    return roads_[connection];
}

std::shared_ptr<EventTarget> FaultRelay::target() {
    std::lock_guard const lock(mutex_);
    return target_;
}

void FaultRelay::detach() {
    std::shared_ptr<EventTarget> gone;
    std::lock_guard const lock(mutex_);
    gone.swap(target_);
}

void FaultRelay::processEvent(counted_ptr<ZANEvent> event) {
    Events const events = due(roadOf(event->getConnectionName()), renamed(*event));
    std::shared_ptr<EventTarget> const to = target();
    std::exception_ptr failure;
    for (counted_ptr<ZANEvent> const& each : events) {
        try {
            if (to) {
                to->take(each);
            }
        } catch (...) {
            // The event behind it has done nothing wrong.
            failure = std::current_exception();
        }
    }
    if (failure) {
        std::rethrow_exception(failure);
    }
}

FaultRelay::Events FaultRelay::due(Road& road, counted_ptr<ZANEvent> event) {
    int const number = ++road.count;
    Events events{event};
    for (Fault const& fault : script_->of("event", number)) {
        switch (fault.kind) {
        case Fault::Kind::Delay:
            std::this_thread::sleep_for(fault.time);
            break;
        case Fault::Kind::Drop:
            events.clear();
            break;
        case Fault::Kind::Reorder:
            road.held.push_back({fault.after, event});
            events.clear();
            break;
        case Fault::Kind::Throw: // a script has no such event
            break;
        }
    }
    for (Held const& each : road.held) {
        if (each.after == number) {
            events.push_back(each.event);
        }
    }
    std::erase_if(road.held, [&](Held const& each) { return each.after == number; });
    return events;
}

void FaultRelay::processStateEvent(counted_ptr<ZANConnectionStateEvent> event) {
    if (std::shared_ptr<EventTarget> const to = target()) {
        to->takeState(counted_ptr<ZANConnectionStateEvent>(new ZANConnectionStateEvent(
            prefix_ + event->getConnectionName(), event->getConnectionState())));
    }
}

} // namespace zan::conformance
