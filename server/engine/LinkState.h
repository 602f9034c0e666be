/// How a connection stands, as a plain value that threads can hand to each other.
#ifndef ZANENGINE_SERVER_ENGINE_LINKSTATE_H
#define ZANENGINE_SERVER_ENGINE_LINKSTATE_H

#include "events/ZANConnectionState.h"
#include "infra/counted_ptr.h"

#include <string>

namespace zan::server {

struct LinkState {
    /// The flags of `ZANConnectionState`.
    long flags = 0;
    int heartbeatSeconds = -1;
    /// Milliseconds since 1970-01-01 00:00:00 UTC.
    double changed = 0;
    std::string local;
    std::string remote;
    std::string lastError;
    /// What guaranteed listeners fail on; nothing to do with the link.
    std::string listenerTrouble;

    bool has(long flag) const { return (flags & flag) != 0; }

    /// A new record for an application.
    counted_ptr<ZANConnectionState> record() const;
};

} // namespace zan::server

#endif
