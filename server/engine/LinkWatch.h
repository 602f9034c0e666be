/// Follows what a session reports: keeps the connection's state, and lets operations wait for it.
///
/// Threads: any.
#ifndef ZANENGINE_SERVER_ENGINE_LINKWATCH_H
#define ZANENGINE_SERVER_ENGINE_LINKWATCH_H

#include "server/engine/LinkState.h"
#include "server/sessions/FixSession.h"

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <set>
#include <string>

namespace zan::server {

/// How an attempt to log on ended.
struct LogonResult {
    enum class Outcome { Pending, LoggedOn, Refused, NotStored, Failed };
    Outcome outcome = Outcome::Pending;
    std::string reason;
};

class LinkWatch {
public:
    using Clock = std::chrono::steady_clock;

    /// `publish` gets every new state, in order and under the lock of this object: it only hands
    /// the state on.
    explicit LinkWatch(std::function<void(LinkState const&)> publish);

    // What the session reports.

    void linkUp(std::string const& local, std::string const& remote);
    void linkDown();
    void loggedOn(int heartbeatSeconds);
    void loggedOff();
    /// False when that was known already.
    bool trouble(FixTrouble kind, std::string const& what);
    /// Something was stored, or could be: what was in the way of it is gone.
    void stored();
    void receivedAdmin(std::string const& message);
    void sentAdmin(std::string const& message);

    // What operations ask, and what they do.

    /// The counterparty reads nothing, or does again.
    void setUnavailable(bool on, std::string const& text);

    /// What guaranteed listeners fail on now; empty when they do not.
    void setListenerTrouble(std::string const& text);

    /// The session was stopped: if the link was still up, it is down now, and nobody is to blame.
    void stopped();

    LinkState state() const;
    bool isLoggedOn() const;

    /// A new attempt begins: what earlier ones left behind counts no more.
    void beginLogon();
    LogonResult waitForLogon(Clock::time_point deadline);

    /// Ends a wait for a logon, because the application does not want it any more.
    void cancelLogon(std::string const& reason);

    /// False when the link is still up at the deadline.
    bool waitForLinkDown(Clock::time_point deadline);

    /// True when the heartbeat that answers the test request `id` came before the deadline; false
    /// also at once when the session is logged off meanwhile. `expectAnswer` comes first, before
    /// the request is sent.
    void expectAnswer(std::string const& id);
    bool waitForAnswer(std::string const& id, Clock::time_point deadline);

private:
    void change(long enter, long leave);
    void closeLink();
    void endLogon(LogonResult::Outcome outcome, std::string const& reason);
    void noteLogout(std::string const& text);

    std::function<void(LinkState const&)> const publish_;
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    LinkState state_;
    LogonResult logon_;
    bool isLogoutSent_ = false;
    bool isLogoutSeen_ = false;
    std::set<std::string, std::less<>> awaited_;
};

} // namespace zan::server

#endif
