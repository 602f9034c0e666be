/// A FIX session with one counterparty: its link, its logon, its numbered messages.
///
/// The session's own work (sequence numbers, heartbeats, resend requests, the stored copy of what
/// was sent) is QuickFIX's, the sockets are ours. No QuickFIX type appears here, because its
/// headers need an older language level than the rest of the system.
///
/// QuickFIX keeps its sessions in a table of the process: a SessionID (BeginString, SenderCompID,
/// TargetCompID, SessionQualifier) is live at most once in it. Making the second one is refused.
/// The module that holds this code must never be unloaded.
#ifndef ZANENGINE_SERVER_SESSIONS_FIXSESSION_H
#define ZANENGINE_SERVER_SESSIONS_FIXSESSION_H

#include "server/sessions/FixMessage.h"
#include "server/sessions/GroupDictionary.h"

#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace zan {
namespace server {

/// What went wrong with a session.
enum class FixTrouble {
    unreachable, ///< no link: refused, no route, no such host
    timedOut,    ///< no answer to the Logon or the Logout, or the heartbeats stopped
    badBytes,    ///< what came in makes no sense
    session      ///< anything else: a sequence number too low, a store that cannot be written ...
};

/// What a session reports. The receiver outlives the session.
///
/// Called from the session's thread and, for `sent`, from whichever thread sends. Calls of one
/// session can come from two threads at the same time; those of one direction come in their order.
/// An implementation returns quickly (while it runs, the session stands still), does not throw, and
/// calls neither `stop` nor the destructor of the session. It may call everything else.
class FixSessionEvents {
public:
    virtual ~FixSessionEvents();

    /// The link is open; both addresses are `host:port`.
    virtual void linkUp(std::string const& local, std::string const& remote) = 0;

    /// The link is closed, after `loggedOff` where the session was logged on. The reason, where it
    /// was no orderly logout, came by `trouble` before.
    virtual void linkDown() = 0;

    virtual void loggedOn(int heartbeatSeconds) = 0;
    virtual void loggedOff() = 0;

    /// A message of the counterparty, as it was on the wire: each one once, in the order of the
    /// sequence numbers, after the session has accepted it. A Logout that refuses our Logon comes
    /// here too, its reason is in tag 58. What the session itself drops (a repetition of what was
    /// already taken) or refuses with a Reject does not come.
    virtual void received(std::string const& message, bool admin) = 0;

    /// A message of ours, as it goes on the wire, in that order: also what is sent again to answer
    /// a resend request (PossDupFlag Y).
    virtual void sent(std::string const& message, bool admin) = 0;

    /// Something went wrong; `text` is for people and names what, where and why.
    virtual void trouble(FixTrouble kind, std::string const& text) = 0;
};

/// How a session is set up.
struct FixSessionSettings {
    /// QuickFIX's keys with their values. BeginString, SenderCompID and TargetCompID are required,
    /// HeartBtInt, SocketConnectHost and SocketConnectPort for an initiator; StartTime and EndTime
    /// are all day when they are not given. With FileStorePath the numbers and the messages
    /// survive the process, without it they live in memory. Keys that choose QuickFIX's own data
    /// dictionaries, logs and SQL stores have no effect here.
    std::vector<std::pair<std::string, std::string>> keys;
    /// Needed to send messages with repeating groups again as they were.
    GroupDictionary groups;
};

/// What became of a message that was given to `FixSession::send`.
enum class FixSendResult {
    sent,        ///< it has its number, is stored, and is on its way
    notLoggedOn, ///< nothing was stored, no number was used
    peerTooSlow, ///< the counterparty does not read: nothing was stored, no number was used
    refused      ///< the store failed: the reason came by `trouble`
};

/// One session. All operations may be called from any thread.
class FixSession {
public:
    /// A session that opens the link itself. Throws std::runtime_error naming the key when a
    /// setting is missing or bad, and when the SessionID is already live in this process.
    static std::unique_ptr<FixSession> initiator(FixSessionSettings const& settings,
                                                 FixSessionEvents& events);

    /// Stops the session.
    virtual ~FixSession();

    /// Begins to connect and to log on, adding these fields to every Logon, and keeps at it
    /// (ReconnectInterval seconds after each failure, 30 when not set) until `requestLogout` or
    /// `stop`. Returns at once; what happens is reported. Nothing happens when it runs already;
    /// where a logout is under way it waits for its end first. Not to be called by a report.
    virtual void start(FixFields const& logonFields) = 0;

    /// Sends a Logout with this text; the link closes when it is answered, or after LogoutTimeout
    /// seconds (2 when not set). There is no reconnecting after it. Returns at once. Where nobody
    /// is logged on the link just closes.
    virtual void requestLogout(std::string const& text) = 0;

    /// Closes the link without ceremony and ends the session's thread; on return no report is
    /// under way and none follows. `start` may be called again. Not to be called by a report.
    virtual void stop() = 0;

    /// Sends a message: the fields go out exactly in this order. Header fields among them are put
    /// into the header; the session's own (8, 9, 34, 35, 49, 52, 56, 10) are passed over.
    /// When too much is waiting for the counterparty to read it waits up to `patience` for room.
    virtual FixSendResult send(std::string const& msgType, FixFields const& body,
                               std::chrono::milliseconds patience) = 0;

    virtual bool isLoggedOn() const = 0;

    /// With false the session reads nothing more from the link until it is called with true;
    /// nothing is lost, the counterparty is held back, and heartbeats still go out. Takes effect
    /// before the next message: it may be called by a report.
    virtual void setReading(bool on) = 0;

    /// The numbers that the next message out and the next message in will carry.
    virtual int nextSenderNumber() const = 0;
    virtual int nextTargetNumber() const = 0;

protected:
    FixSession() = default;
    FixSession(FixSession const&) = delete;
    FixSession& operator=(FixSession const&) = delete;
};

} // namespace server
} // namespace zan

#endif
