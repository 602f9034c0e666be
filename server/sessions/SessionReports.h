/// What a session has to report once its transaction is committed.
#ifndef ZANENGINE_SERVER_SESSIONS_SESSIONREPORTS_H
#define ZANENGINE_SERVER_SESSIONS_SESSIONREPORTS_H

#include "server/sessions/FixSession.h"

#include <atomic>
#include <string>
#include <vector>

namespace zan {
namespace server {

/// For the thread that has the store's turn; `isLoggedOn` is for any.
class SessionReports {
public:
    explicit SessionReports(FixSessionEvents& events) : events_(events) {}

    void loggedOn(int heartbeatSeconds);
    void loggedOff();
    void trouble(FixTrouble kind, std::string const& text);

    /// Does a logon wait to be reported?
    bool hasLogon() const { return hasLogon_; }
    /// As it was reported last.
    bool isLoggedOn() const { return loggedOn_.load(std::memory_order_acquire); }

    /// Reports everything in its order.
    void deliver();
    /// What happened in the transaction has not happened; this is why. A session that logged off
    /// stays so.
    void fail(FixTrouble kind, std::string const& text);
    void forget();

private:
    struct Report {
        enum Kind { on, off, problem } kind;
        int heartbeatSeconds;
        FixTrouble troubleKind;
        std::string text;
    };

    void deliver(Report const& report);

    FixSessionEvents& events_;
    std::vector<Report> waiting_;
    bool hasLogon_ = false;
    std::atomic<bool> loggedOn_{false};
};

} // namespace server
} // namespace zan

#endif
