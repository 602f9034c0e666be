/// Reads the settings of one session.
#ifndef ZANENGINE_SERVER_SESSIONS_SESSIONSETUP_H
#define ZANENGINE_SERVER_SESSIONS_SESSIONSETUP_H

#include "server/sessions/FixSession.h"
#include "server/sessions/Sockets.h"

#include <chrono>
#include <string>
#include <vector>

#include <quickfix/Dictionary.h>
#include <quickfix/SessionID.h>

namespace zan {
namespace server {

/// The keys as QuickFIX's session wants them, with what is missing filled in and what has no
/// effect here taken out. Throws std::runtime_error naming a required key that is missing.
FIX::Dictionary makeDictionary(FixSessionSettings const& settings, bool initiator);

FIX::SessionID makeSessionId(FIX::Dictionary const& keys);

/// How the links of a session are made, and how long things may take.
struct LinkSetup {
    std::vector<SocketTarget> targets; ///< tried in turn; one without a host for an acceptor
    std::chrono::seconds reconnectInterval;
    std::chrono::seconds logonTimeout;
    std::chrono::seconds logoutTimeout;
    bool validatesFrames; ///< whether lengths and checksums have to be right
};

/// Throws std::runtime_error naming the key that is missing or bad.
LinkSetup makeLinkSetup(FixSessionSettings const& settings, bool initiator);

} // namespace server
} // namespace zan

#endif
