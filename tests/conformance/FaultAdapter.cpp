#include "conformance/FaultAdapter.h"

#include "adapter/ListenerCounts.h"
#include "conformance/FaultRelay.h"
#include "engine/ZANEngineProxy.h"
#include "errors/ZANEngineException.h"
#include "events/ZANEngineDefs.h"

#include <algorithm>
#include <functional>
#include <thread>
#include <utility>

namespace zan::conformance {

namespace {

/// The facade, by way of the adapter.
class FacadeTarget final : public EventTarget {
public:
    explicit FacadeTarget(std::function<void(counted_ptr<ZANEvent>)> report)
        : report_(std::move(report)) {}
    void take(counted_ptr<ZANEvent> event) override { report_(event); }
    void takeState(counted_ptr<ZANConnectionStateEvent>) override {}

private:
    std::function<void(counted_ptr<ZANEvent>)> report_;
};

class ListenerTarget final : public EventTarget {
public:
    explicit ListenerTarget(counted_ptr<IZANEventListener> const& listener)
        : listener_(share(listener)) {}
    ~ListenerTarget() override { letGo(listener_); }
    void take(counted_ptr<ZANEvent> event) override { listener_->processEvent(event); }
    void takeState(counted_ptr<ZANConnectionStateEvent> event) override {
        listener_->processStateEvent(event);
    }

private:
    counted_ptr<IZANEventListener> listener_;
};

} // namespace

int CallCounts::begin(std::string const& operation) {
    std::lock_guard const lock(mutex_);
    return ++begun_[operation];
}

void CallCounts::end(std::string const& operation, int number) {
    {
        std::lock_guard const lock(mutex_);
        int& highest = highestDone_[operation];
        highest = std::max(highest, number);
    }
    changed_.notify_all();
}

void CallCounts::waitFor(std::string const& operation, int number) {
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, std::chrono::seconds(1),
                      [&] { return highestDone_[operation] >= number; });
}

std::string const& FaultAdapter::prefix() {
    static std::string const prefix = "fault.";
    return prefix;
}

FaultAdapter::FaultAdapter(counted_ptr<IZANEngineConfigProvider> provider,
                           counted_ptr<IZANEngineAdapter> inner, FaultScript script)
    : ZANEngineAdapterBase(provider), inner_(std::move(inner)),
      script_(std::make_shared<FaultScript const>(std::move(script))) {}

FaultAdapter::~FaultAdapter() = default;

bool FaultAdapter::begin(std::string const& operation, int number) const {
    bool reachesTheEngine = true;
    for (Fault const& fault : script_->of(operation, number)) {
        switch (fault.kind) {
        case Fault::Kind::Throw:
            throwByName(fault.exception, fault.text);
        case Fault::Kind::Delay:
            std::this_thread::sleep_for(fault.time);
            break;
        case Fault::Kind::Drop:
            reachesTheEngine = false;
            break;
        case Fault::Kind::Reorder:
            counts_.waitFor(operation, fault.after);
            break;
        }
    }
    return reachesTheEngine;
}

// The facade is not there before the adapter has started, so this is done with the first call.
void FaultAdapter::listenToTheInnerOne() {
    std::lock_guard const lock(relaysMutex_);
    if (isListening_ || !ZANEngineProxy::isInitialized()) {
        return;
    }
    isListening_ = true;
    UserTicket const ticket("fault", "");
    std::vector<std::string> names;
    try {
        inner_->getConnectionNameList(ticket, names);
    } catch (ZANEngineException const&) {
        return; // an engine without names has no events that one could listen to
    }
    counted_ptr<IZANEventListener> relay(new FaultRelay(
        script_, prefix(),
        std::make_shared<FacadeTarget>([this](auto event) { eventReceived(event); })));
    for (std::string const& name : names) {
        for (std::string const& type :
             {ZANEngineDefs::APP_EVENT_TYPE, ZANEngineDefs::ADMIN_EVENT_TYPE}) {
            ZANEngineProxy::getInstance().subscribe(ticket, relay, name, type);
        }
    }
    kept_.push_back(std::move(relay));
}

bool FaultAdapter::hasRelay(Listener listener) {
    std::lock_guard const lock(relaysMutex_);
    return relays_.contains(listener.get());
}

counted_ptr<IZANEventListener>& FaultAdapter::relayOf(Listener listener) {
    std::lock_guard const lock(relaysMutex_);
    counted_ptr<IZANEventListener>& relay = relays_[listener.get()];
    if (!relay) {
        relay = counted_ptr<IZANEventListener>(
            new FaultRelay(script_, prefix(), std::make_shared<ListenerTarget>(listener)));
    }
    return relay;
}

void FaultAdapter::retireRelayOf(Listener listener) {
    FaultRelay* relay = nullptr;
    {
        std::lock_guard const lock(relaysMutex_);
        auto const found = relays_.find(listener.get());
        if (found == relays_.end()) {
            return;
        }
        relay = static_cast<FaultRelay*>(found->second.get());
        kept_.push_back(std::move(found->second));
        relays_.erase(found);
    }
    // The listener may end with this.
    relay->detach();
}

} // namespace zan::conformance
