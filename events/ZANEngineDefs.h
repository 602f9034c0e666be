/// `ZANEngineDefs`: the names under which listeners subscribe to the kinds of events. They are
/// compared exactly, case included.
///
/// Threads: constants; they may be read from any thread between load and unload of the library, but
/// not by static initialisers and destructors of other modules.
#ifndef ZANENGINE_EVENTS_ZANENGINEDEFS_H
#define ZANENGINE_EVENTS_ZANENGINEDEFS_H

#include "infra/Export.h"

#include <string>

class ZAN_API ZANEngineDefs {
public:
    /// "APP": application messages, `ZANAppMessageEvent`.
    static std::string const APP_EVENT_TYPE;
    /// "ADMIN": administrative messages, `ZANAdminMessageEvent`.
    static std::string const ADMIN_EVENT_TYPE;
    /// "STATE": connection states. Accepted, but the facade delivers no state events.
    static std::string const STATE_EVENT_TYPE;
};

#endif
