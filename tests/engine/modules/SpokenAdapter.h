#ifndef ZANENGINE_TESTS_ENGINE_MODULES_SPOKENADAPTER_H
#define ZANENGINE_TESTS_ENGINE_MODULES_SPOKENADAPTER_H

#include "conformance/RecordingAdapter.h"
#include "engine/ZANEngineProxy.h"
#include "errors/ZANEngineRemoteException.h"
#include "errors/ZANNotConnectedException.h"
#include "events/ZANAppMessageEvent.h"

#include <cstdint>
#include <stdexcept>

using zan::conformance::RecordingAdapter;

/// An exception that only the module knows by name.
class ModuleException : public ZANNotConnectedException {
public:
    using ZANNotConnectedException::ZANNotConnectedException;
};

/// The adapter of the test modules. Operations answer what a test looks at from across the border.
class SpokenAdapter : public RecordingAdapter {
public:
    explicit SpokenAdapter(std::string const& path) { properties = path; }

    /// The address of the facade as this module sees it.
    std::int64_t getMillisTime(UserTicket const&) override {
        return static_cast<std::int64_t>(
            reinterpret_cast<std::uintptr_t>(&ZANEngineProxy::getInstance()));
    }

    void resetConnection(UserTicket const&, std::string const& name) override {
        if (name == "foreign") {
            throw std::runtime_error("foreign");
        }
        throw ModuleException("thrown in the module");
    }

    /// Reports an event that was built in the module, and catches what the listener throws.
    bool isConnected(UserTicket const&, std::string const& name) override {
        try {
            eventReceived(counted_ptr<ZANEvent>(new ZANAppMessageEvent(name, nullptr)));
        } catch (ZANEngineRemoteException const&) {
            return true;
        }
        return false;
    }
};

#endif
