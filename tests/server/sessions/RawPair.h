/// A session of ours and a counterparty of bare bytes.
#ifndef ZANENGINE_TESTS_SERVER_SESSIONS_RAWPAIR_H
#define ZANENGINE_TESTS_SERVER_SESSIONS_RAWPAIR_H

#include "server/sessions/RawPeer.h"
#include "server/sessions/SessionPair.h"

#include <memory>

/// The session connects to the peer; nothing runs before `logOn`.
struct RawPair {
    explicit RawPair(Keys const& keys = {}, zan::server::FixSessionStore* store = nullptr) {
        zan::server::FixSessionSettings settings = settingsFor("US", "THEM", peer.port(), keys);
        settings.store = store;
        us = zan::server::FixSession::initiator(settings, ours);
    }

    bool logOn() {
        us->start({});
        return peer.logOn() && ours.waitFor("on");
    }

    RawPeer peer;
    SessionRecorder ours;
    std::unique_ptr<zan::server::FixSession> us;
};

#endif
