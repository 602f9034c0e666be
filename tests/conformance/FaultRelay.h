/// `FaultRelay`: takes the events of an inner adapter and hands them on as a script has it.
#ifndef ZANENGINE_CONFORMANCE_FAULTRELAY_H
#define ZANENGINE_CONFORMANCE_FAULTRELAY_H

#include "adapter/IZANEventListener.h"
#include "conformance/FaultScript.h"

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace zan::conformance {

/// Where events go.
class EventTarget {
public:
    EventTarget() = default;
    EventTarget(EventTarget const&) = delete;
    EventTarget& operator=(EventTarget const&) = delete;
    virtual ~EventTarget();

    virtual void take(counted_ptr<ZANEvent> event) = 0;
    virtual void takeState(counted_ptr<ZANConnectionStateEvent> event) = 0;
};

/// Threads: those of the inner adapter, one at a time for each connection.
class FaultRelay : public IZANEventListener {
public:
    FaultRelay(std::shared_ptr<FaultScript const> script, std::string prefix,
               std::shared_ptr<EventTarget> target);

    void processEvent(counted_ptr<ZANEvent> event) override;
    void processStateEvent(counted_ptr<ZANConnectionStateEvent> event) override;

    /// Lets go of the target, at once or when the event that is on its way has got there.
    void detach();

private:
    using Events = std::vector<counted_ptr<ZANEvent>>;
    struct Held {
        int after;
        counted_ptr<ZANEvent> event;
    };
    struct Road {
        int count = 0;
        std::vector<Held> held;
    };

    counted_ptr<ZANEvent> renamed(ZANEvent const& event) const;
    Events due(Road& road, counted_ptr<ZANEvent> event);
    std::shared_ptr<EventTarget> target();
    Road& roadOf(std::string const& connection);

    std::shared_ptr<FaultScript const> const script_;
    std::string const prefix_;
    std::mutex mutex_;
    std::shared_ptr<EventTarget> target_;
    std::map<std::string, Road> roads_;
};

} // namespace zan::conformance

#endif
