/// Calls code of others, and lives with whatever it throws.
///
/// Threads: functions without state.
#ifndef ZANENGINE_SERVER_ENGINE_GUARDED_H
#define ZANENGINE_SERVER_ENGINE_GUARDED_H

#include "server/engine/EngineErrors.h"

#include <exception>

namespace zan::server {

/// Calls `call`, and `fail` with the reason when that throws; true when it did not. `fail` may run
/// out of memory too: then that is told instead.
template <class Call, class Fail>
bool callGuarded(Call const& call, Fail const& fail) noexcept {
    auto const tell = [&](char const* reason) {
        try {
            fail(reason);
        } catch (...) {
            reportNoMemory();
        }
    };
    try {
        call();
        return true;
    } catch (std::exception const& e) {
        tell(e.what());
    } catch (...) {
        tell("unknown exception");
    }
    return false;
}

} // namespace zan::server

#endif
