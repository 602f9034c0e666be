/// A session over a watched store, against bare bytes.
#ifndef ZANENGINE_TESTS_SERVER_SESSIONS_STOREDPAIR_H
#define ZANENGINE_TESTS_SERVER_SESSIONS_STOREDPAIR_H

#include "server/sessions/RawPair.h"
#include "server/sessions/WatchedStore.h"

#include <string>

struct StoredPair {
    explicit StoredPair(Keys const& keys = {}) : pair(keys, &store) {}

    bool logOn() { return pair.logOn(); }
    zan::server::FixSendResult send(std::string const& title) {
        return sendOne(*pair.us, "B", {{148, title}});
    }

    WatchedStore store;
    RawPair pair;
};

#endif
