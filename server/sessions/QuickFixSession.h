/// QuickFIX's session object with everything that it wants around it.
#ifndef ZANENGINE_SERVER_SESSIONS_QUICKFIXSESSION_H
#define ZANENGINE_SERVER_SESSIONS_QUICKFIXSESSION_H

#include "server/sessions/FixSession.h"
#include "server/sessions/GapCount.h"
#include "server/sessions/QuickFixMessages.h"
#include "server/sessions/QuickFixStore.h"
#include "server/sessions/ResendPlan.h"
#include "server/sessions/SessionHours.h"
#include "server/sessions/SessionReports.h"
#include "server/sessions/SocketLink.h"

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <quickfix/Application.h>
#include <quickfix/Log.h>
#include <quickfix/Responder.h>
#include <quickfix/Session.h>

namespace zan {
namespace server {

/// A message that came in, or bytes that are none: then `fault` tells why.
struct Incoming {
    std::string text;
    std::string fault;
};

/// Owns the session object, and does its work in transactions of the store.
///
/// Whatever makes QuickFIX write takes the store's turn first, lets it write into memory, commits,
/// and only then gives the bytes to the link and the entries to the receiver of reports. So
/// QuickFIX's own locks are never waited for, and nothing of ours is waited for under them.
///
/// `send`, `isOpen`, `isLoggedOn` and the numbers are for any thread, `resetNumbers` and
/// `setNumbers` for a time when there is no link, the rest is for the session's thread or for a
/// time when there is none. What QuickFIX throws ends here.
class QuickFixSession : private FIX::Application, private FIX::Log, private FIX::Responder {
public:
    /// Throws std::runtime_error when the settings are wrong, when the store fails, and when the
    /// SessionID is live already.
    QuickFixSession(FixSessionSettings const& settings, bool initiator, FixSessionEvents& events,
                    SocketLink& link);
    ~QuickFixSession() override;
    QuickFixSession(QuickFixSession const&) = delete;
    QuickFixSession& operator=(QuickFixSession const&) = delete;

    FIX::SessionID const& id() const { return id_; }
    void setLogonFields(FixFields const& fields) { logonFields_ = fields; }

    /// May the session be logged on now, by its hours?
    bool isOpen() const { return hours_.isOpen(clock_()); }
    /// To be called now and then while the session is closed: lets its numbers begin again where it
    /// is time for it. Returns words on when it opens.
    std::string rest();
    /// The link is open: the session begins to talk over it.
    void attach();
    /// Takes what came in, in one transaction where that is neither too much nor takes too long.
    void take(std::vector<Incoming>& messages);
    /// To be called several times a second: heartbeats and everything else that has its time.
    void tick();
    /// The same while nothing is read: sends heartbeats, but does not expect any.
    void tickWithoutReading();
    /// Is there something to send again now, as the counterparty asked for? `resendMore` sends a
    /// part of it.
    bool hasMoreToResend() { return resends_.isDue(FairLock::Clock::now()); }
    void resendMore();
    /// Says goodbye; false when nobody is logged on, so that there is no answer to wait for.
    bool sayLogout(std::string const& text);
    /// The link is closing.
    void detach();
    /// Something failed in the middle of the session's work, which is undone; the link ends.
    void abandon(std::string const& reason);

    FixSendResult send(std::vector<FixOutgoing> const& messages,
                       FairLock::Clock::time_point deadline, std::vector<long>& ids);
    void resetNumbers(std::string const& note);
    void setNumbers(FixNumbers numbers, std::vector<std::string> const& notes);
    bool isLoggedOn() const { return reports_.isLoggedOn(); }
    FixNumbers numbers() const { return log_.numbers(); }

private:
    class Logs;
    class Turn;

    void onCreate(FIX::SessionID const&) override {}
    void onLogon(FIX::SessionID const&) override;
    void onLogout(FIX::SessionID const&) override;
    void toAdmin(FIX::Message& message, FIX::SessionID const&) override;
    void toApp(FIX::Message& message, FIX::SessionID const&) throw(FIX::DoNotSend) override;
    void fromAdmin(FIX::Message const& message,
                   FIX::SessionID const&) throw(FIX::IncorrectDataFormat) override;
    void fromApp(FIX::Message const& message,
                 FIX::SessionID const&) throw(FIX::IncorrectDataFormat,
                                              FIX::UnsupportedMessageType) override;

    void clear() override {}
    void backup() override {}
    void onIncoming(std::string const&) override {}
    void onOutgoing(std::string const& text) override;
    void onEvent(std::string const& event) override;

    bool send(std::string const&) override { return !link_.ending(); }
    void disconnect() override { closing_ = true; }

    void create(FixSessionSettings const& settings, bool initiator);
    void addLogonFields(FIX::Message& logon);

    FIX::UtcTimeStamp stamp();
    bool hasRunEnded(long long now) const;
    void keepHours();
    void renewNumbering();
    template <typename Change>
    void changeNumbers(std::vector<std::string> const& notes, Change const& change);
    void addRemark(std::string const& note);

    using Action = std::function<void()>;

    void work(Action const& action);
    void guarded(Action const& action);
    void contained(Action const& action);
    void settle();
    void letOut(std::vector<FixEntry>& entries);
    void fail(FixTrouble kind, std::string reason);
    std::string write(std::vector<FixOutgoing> const& messages, std::vector<long>& ids);

    void takeOne(Incoming& incoming);
    void takeGarbage(Incoming& incoming);
    void endOver(Incoming& incoming, std::string const& reason);
    void finishRefusal();
    void beginToResend();
    NumberRange nextSlice();
    NumberRange nothing() const;
    void accept(FIX::Message const& message, FixStream stream);
    std::string takeText(FIX::Message const& message);
    void keepForLater();
    void countKeptAsHeard();
    void refuseAsAnswered(FIX::Message const& answer);
    void tellFault(FIX::Message& reject);
    void refuse(std::string text, std::string const& reason);

    SocketLink& link_;
    Expectations expected_;
    std::unique_ptr<FixSessionStore> const ownLog_;
    FixSessionStore& log_;
    std::atomic<std::thread::id> turnHolder_;
    FIX::SessionID id_;
    FixFields logonFields_;
    std::unique_ptr<FIX::LogFactory> logs_;
    SessionHours const hours_;
    std::function<long long()> const clock_;

    // With the turn.
    FixSessionEvents& events_;
    SessionReports reports_;
    QuickFixStore store_;
    FIX::Message incoming_;
    FIX::Message outgoing_;
    GapCount waiting_;
    ResendPlan resends_;
    FIX::Message slice_;
    MessageFault fault_;               // of the message that is refused right now
    bool hasResent_ = false;           // since the turn began
    bool isHeard_ = false;             // messages that wait came since the last tick
    bool isUnread_ = false;            // was rejected before anybody could accept it
    Incoming* current_ = nullptr;      // not yet accepted, refused or put aside
    FixOutgoing const* own_ = nullptr; // what an application sends
    std::vector<long>* ids_ = nullptr; // of what it sent
    std::string held_;                 // bytes that wait for the commit
    std::string lastEvent_;
    std::string broken_; // why the transaction has to fail
    bool closing_ = true;
    int garbageInARow_ = 0;
    long long lastSentMillis_ = 0;
    std::unique_ptr<FIX::Session> session_;
};

} // namespace server
} // namespace zan

#endif
