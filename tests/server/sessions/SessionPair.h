/// An acceptor and an initiator that talk over loopback.
#ifndef ZANENGINE_TESTS_SERVER_SESSIONS_SESSIONPAIR_H
#define ZANENGINE_TESTS_SERVER_SESSIONS_SESSIONPAIR_H

#include "server/sessions/FixAcceptor.h"
#include "support/SessionRecorder.h"

#include <memory>
#include <string>

using Keys = std::vector<std::pair<std::string, std::string>>;

inline zan::server::FixSessionSettings
settingsFor(std::string const& sender, std::string const& target, int port, Keys const& more = {}) {
    zan::server::FixSessionSettings settings;
    settings.keys = {{"BeginString", "FIX.4.4"},
                     {"SenderCompID", sender},
                     {"TargetCompID", target},
                     {"HeartBtInt", "5"},
                     {"ReconnectInterval", "1"},
                     {"SocketConnectHost", "127.0.0.1"},
                     {"SocketConnectPort", std::to_string(port)}};
    settings.keys.insert(settings.keys.end(), more.begin(), more.end());
    return settings;
}

inline zan::server::FixSendResult
sendOne(zan::server::FixSession& session, std::string const& type,
        zan::server::FixFields const& body,
        std::chrono::milliseconds patience = std::chrono::seconds(2)) {
    std::vector<long> ids;
    return session.send({{type, body}}, patience, ids);
}

/// `us` connects to `them`; nothing runs before `logOn`.
struct SessionPair {
    explicit SessionPair(Keys const& ourKeys = {}, Keys const& theirKeys = {},
                         zan::server::FixSessionStore* ourStore = nullptr)
        : acceptor(zan::server::FixAcceptor::listen("127.0.0.1", 0)) {
        them = &acceptor->add(settingsFor("THEM", "US", 0, theirKeys), theirs);
        zan::server::FixSessionSettings settings =
            settingsFor("US", "THEM", acceptor->port(), ourKeys);
        settings.store = ourStore;
        us = zan::server::FixSession::initiator(settings, ours);
    }

    bool logOn(zan::server::FixFields const& logonFields = {}) {
        acceptor->start();
        us->start(logonFields);
        return ours.waitFor("on") && theirs.waitFor("on");
    }

    zan::server::FixSendResult send(std::string const& type, zan::server::FixFields const& body) {
        return sendOne(*us, type, body);
    }

    SessionRecorder ours;
    SessionRecorder theirs;
    std::unique_ptr<zan::server::FixAcceptor> acceptor;
    zan::server::FixSession* them = nullptr;
    std::unique_ptr<zan::server::FixSession> us;
};

#endif
