/// A listener that ends the engine, as applications may.
#ifndef ZANENGINE_TESTS_SUPPORT_ENDER_H
#define ZANENGINE_TESTS_SUPPORT_ENDER_H

#include "zanengine.h"

#include <atomic>
#include <exception>
#include <memory>
#include <utility>

/// What the listener tells. It outlives the listener, which goes with the engine: `isGone` is the
/// last of it.
struct Ending {
    std::atomic<bool> hasBegun{false};
    std::atomic<bool> hasEnded{false};
    std::atomic<bool> hasFailed{false};
    std::atomic<bool> isGone{false};
};

/// Ends the engine with the first event that it gets. The engine lets go of its listeners on a
/// thread of its own then: a test keeps no handle of them, or lets go of it before the event comes.
class Ender : public IZANEventListener {
public:
    explicit Ender(std::shared_ptr<Ending> ending) : ending_(std::move(ending)) {}
    Ender(Ender const&) = delete;
    Ender& operator=(Ender const&) = delete;
    ~Ender() override { ending_->isGone = true; }

    void processEvent(counted_ptr<ZANEvent>) override {
        if (ending_->hasBegun.exchange(true)) {
            return;
        }
        try {
            ZANEngineProxy::uninitialize();
            ZANEngineProxy::uninitialize();
        } catch (std::exception const&) {
            ending_->hasFailed = true;
        }
        ending_->hasEnded = true;
    }
    void processStateEvent(counted_ptr<ZANConnectionStateEvent>) override {}

private:
    std::shared_ptr<Ending> ending_;
};

#endif
