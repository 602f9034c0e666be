/// `zan::EngineScope`: the engine for as long as an object lives, however the scope is left.
///
/// Threads: made and ended on one thread, while no other uses the engine; in between `*` and `->`
/// may be used from any thread.
#ifndef ZANENGINE_COMFORT_ENGINESCOPE_H
#define ZANENGINE_COMFORT_ENGINESCOPE_H

#include "engine/ZANEngineProxy.h"
#include "errors/ZANEngineException.h"
#include "infra/Diagnostics.h"
#include "infra/Url.h"
#include "infra/counted_ptr.h"

#include <exception>
#include <string>
#include <vector>

namespace zan {

/// Declared after what listeners refer to, it ends before that: no event comes later.
class EngineScope {
public:
    /// `ZANEngineProxy::initialize`, with its exceptions. `ZANEngineException` when there is an
    /// engine already, because this object would end it.
    explicit EngineScope(Url const& url) {
        refuseSecond();
        ZANEngineProxy::initialize(url);
    }
    EngineScope(counted_ptr<IZANEngineConfigProvider> const& provider,
                counted_ptr<IZANEngineAdapterFactory> const& factory) {
        refuseSecond();
        ZANEngineProxy::initialize(provider, factory);
    }
    EngineScope(EngineScope const&) = delete;
    EngineScope& operator=(EngineScope const&) = delete;

    /// `ZANEngineProxy::uninitialize`, unless that was done. Its exception is told to the
    /// diagnostics; whoever wants it calls `uninitialize` first.
    ~EngineScope() {
        try {
            ZANEngineProxy::uninitialize();
        } catch (std::exception const& e) {
            diagnose(DiagnosticLevel::Error, "engine", std::string("did not end: ") + e.what());
        } catch (...) {
            diagnose(DiagnosticLevel::Error, "engine", "did not end");
        }
    }

    /// The engine; `ZANEngineException` when it was ended.
    ZANEngineProxy& operator*() const { return ZANEngineProxy::getInstance(); }
    ZANEngineProxy* operator->() const { return &ZANEngineProxy::getInstance(); }

private:
    static void refuseSecond() {
        if (ZANEngineProxy::isInitialized()) {
            throw ZANEngineException("an engine runs already in this process");
        }
    }
};

/// The names of all connections, as `getConnectionNameList` gives them.
inline std::vector<std::string> connectionNames(IZANEngine& engine, UserTicket const& ticket) {
    std::vector<std::string> names;
    engine.getConnectionNameList(ticket, names);
    return names;
}

} // namespace zan

#endif
