/// Tells operators, in plain words, what happens to one connection.
///
/// Threads: any, also under the locks of a session.
#ifndef ZANENGINE_SERVER_ENGINE_CONNECTIONDIARY_H
#define ZANENGINE_SERVER_ENGINE_CONNECTIONDIARY_H

#include "server/engine/DiagnosticQueue.h"
#include "server/engine/LinkState.h"
#include "server/engine/LinkWatch.h"
#include "server/sessions/FixSession.h"

#include <string>
#include <vector>

namespace zan::server {

class ConnectionDiary {
public:
    ConnectionDiary(std::string const& connection, DiagnosticQueue& queue)
        : connection_(connection), queue_(queue) {}

    // What the application does.

    void connecting(std::string const& address);
    void notConnected(std::string const& reason);
    void disconnecting(std::string const& reason);

    /// What differs from the state of before: link, logon, storage, a counterparty that does not
    /// read. The numbers are those that come next. For one thread at a time.
    void stateChanged(LinkState const& state, FixNumbers numbers);

    void trouble(FixTrouble kind, std::string const& text);

    /// What was committed: gaps, resend requests, rejects, logouts, and what was refused.
    void logged(std::vector<FixEntry> const& entries);

    /// What a listener did, or did not do. Also goes to standard output, in one line.
    void listenerTrouble(std::string const& text);

    /// A guaranteed listener has got over the message on which it failed.
    void listenerGoesOn(std::string const& subscriber);

private:
    void loggedEntry(FixEntry const& entry);
    void linkChanged(LinkState const& state);
    void loggedMessage(FixEntry const& entry);
    template <class Text>
    void tell(DiagnosticLevel level, char const* category, Text const& text);

    std::string const connection_;
    long knownFlags_ = 0;
    DiagnosticQueue& queue_;
};

} // namespace zan::server

#endif
