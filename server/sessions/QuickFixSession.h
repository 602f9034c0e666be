/// QuickFIX's session object with everything that it wants around it.
#ifndef ZANENGINE_SERVER_SESSIONS_QUICKFIXSESSION_H
#define ZANENGINE_SERVER_SESSIONS_QUICKFIXSESSION_H

#include "server/sessions/FixSession.h"
#include "server/sessions/SocketLink.h"

#include <atomic>
#include <memory>
#include <string>

#include <quickfix/Application.h>
#include <quickfix/Log.h>
#include <quickfix/MessageStore.h>
#include <quickfix/Responder.h>
#include <quickfix/Session.h>

namespace zan {
namespace server {

/// Owns the session object and turns what it calls into reports.
///
/// `send`, `isLoggedOn` and the numbers are for any thread, the rest is for the session's thread
/// or for a time when there is none. What QuickFIX throws ends here.
class QuickFixSession : private FIX::Application, private FIX::Log, private FIX::Responder {
public:
    /// Throws std::runtime_error when the settings are wrong or the SessionID is live already.
    QuickFixSession(FixSessionSettings const& settings, bool initiator, FixSessionEvents& events,
                    SocketLink& link);
    ~QuickFixSession() override;
    QuickFixSession(QuickFixSession const&) = delete;
    QuickFixSession& operator=(QuickFixSession const&) = delete;

    FIX::SessionID const& id() const { return id_; }
    void setLogonFields(FixFields const& fields) { logonFields_ = fields; }

    /// May a link be opened now, by the session's times of day?
    bool isOpeningTime() const;
    /// The link is open: the session begins to talk over it.
    void attach();
    /// A framed message came in.
    void take(std::string const& text);
    /// To be called several times a second: heartbeats and everything else that has its time.
    void tick();
    /// The same while nothing is read: sends heartbeats, but does not expect any.
    void tickWithoutReading();
    /// Says goodbye; false when nobody is logged on, so that there is no answer to wait for.
    bool sayLogout(std::string const& text);
    /// The link is closing.
    void detach();

    FixSendResult send(std::string const& msgType, FixFields const& body);
    bool isLoggedOn() const { return loggedOn_.load(std::memory_order_acquire); }
    int nextSenderNumber() const;
    int nextTargetNumber() const;

private:
    class Logs;

    void onCreate(FIX::SessionID const&) override {}
    void onLogon(FIX::SessionID const&) override;
    void onLogout(FIX::SessionID const&) override;
    void toAdmin(FIX::Message& message, FIX::SessionID const&) override;
    void toApp(FIX::Message&, FIX::SessionID const&) throw(FIX::DoNotSend) override;
    void fromAdmin(FIX::Message const& message,
                   FIX::SessionID const&) throw(FIX::IncorrectDataFormat) override;
    void fromApp(FIX::Message const& message,
                 FIX::SessionID const&) throw(FIX::IncorrectDataFormat) override;

    void clear() override {}
    void backup() override {}
    void onIncoming(std::string const&) override {}
    void onOutgoing(std::string const& text) override;
    void onEvent(std::string const& text) override;

    bool send(std::string const& bytes) override;
    void disconnect() override;

    void create(FixSessionSettings const& settings, bool initiator);
    void addLogonFields(FIX::Message& logon) const;
    void refuseWhenLoggedOff() const;
    template <typename Action>
    void guarded(Action const& action);

    FixSessionEvents& events_;
    SocketLink& link_;
    FIX::SessionID id_;
    FixFields logonFields_;
    FIX::Message incoming_;
    std::atomic<bool> loggedOn_{false};
    std::atomic<long long> lastSentMillis_{0};
    std::unique_ptr<FIX::MessageStoreFactory> stores_;
    std::unique_ptr<FIX::LogFactory> logs_;
    std::unique_ptr<FIX::Session> session_;
};

} // namespace server
} // namespace zan

#endif
