/// A session over one link at a time: what initiating and accepting sessions have in common.
#ifndef ZANENGINE_SERVER_SESSIONS_SESSIONRUNNER_H
#define ZANENGINE_SERVER_SESSIONS_SESSIONRUNNER_H

#include "server/sessions/FixFramer.h"
#include "server/sessions/FixSession.h"
#include "server/sessions/QuickFixSession.h"
#include "server/sessions/SessionSetup.h"
#include "server/sessions/SocketLink.h"

#include <atomic>
#include <chrono>
#include <mutex>
#include <string>
#include <vector>

namespace zan {
namespace server {

class SessionRunner : public FixSession {
public:
    void requestLogout(std::string const& text) override;
    FixSendResult send(std::vector<FixOutgoing> const& messages, std::chrono::milliseconds patience,
                       std::vector<long>& ids) override;
    void resetNumbers(std::string const& note) override { session_.resetNumbers(note); }
    void setNumbers(FixNumbers numbers, std::vector<std::string> const& notes) override {
        session_.setNumbers(numbers, notes);
    }
    bool isLoggedOn() const override { return session_.isLoggedOn(); }
    std::size_t unsentBytes() const override { return link_.backlog(); }
    void setReading(bool on) override;
    int nextSenderNumber() const override { return session_.numbers().nextOut; }
    int nextTargetNumber() const override { return session_.numbers().nextIn; }

protected:
    SessionRunner(FixSessionSettings const& settings, bool initiator, FixSessionEvents& events);

    /// Talks over this socket, which it takes over, until the link ends. `firstMessage` was read
    /// already, or is empty; bytes that came after it are in the framer.
    void serve(int socket, std::string const& firstMessage);
    /// Makes `serve` return soon, and for good until `forgetRequests`.
    void quit();
    void forgetRequests();
    void forgetLogout() { logoutRequested_ = false; }
    /// Is there a reason not to open another link?
    bool isQuitting() const { return quitting_ || logoutRequested_; }
    bool isStopped() const { return quitting_; }

    FixSessionEvents& events_;
    LinkSetup setup_;
    SocketLink link_;
    QuickFixSession session_;
    FixFramer framer_;

private:
    using Clock = std::chrono::steady_clock;

    void talk(std::string const& firstMessage);
    void readBytes();
    void deliver();
    bool frameSome();
    bool canResend();
    void handleLogoutRequest();
    void tickWhenDue();
    void finish();
    std::chrono::milliseconds timeToTick() const;

    std::vector<char> bytes_;
    std::vector<Incoming> incoming_;
    std::atomic<bool> reading_{true};
    std::atomic<bool> quitting_{false};
    std::atomic<bool> logoutRequested_{false};
    std::mutex logoutMutex_;
    std::string logoutText_;
    bool logoutSaid_ = false;
    Clock::time_point logoutDeadline_;
    Clock::time_point nextTick_;
};

} // namespace server
} // namespace zan

#endif
