/// A FIX session with one counterparty: its link, its logon, its numbered messages.
///
/// The session's own work (sequence numbers, heartbeats, resend requests) is QuickFIX's; the
/// sockets and the log of what came and went are ours. No QuickFIX type appears here, because its
/// headers need an older language level than the rest of the system.
///
/// A message is committed to the session's store, together with the numbers after it, before its
/// bytes leave, before it is reported, and before what it made the session answer leaves. Where a
/// commit fails nothing has happened.
///
/// QuickFIX keeps its sessions in a table of the process: a SessionID (BeginString, SenderCompID,
/// TargetCompID, SessionQualifier) is live at most once in it. Making the second one is refused.
/// The module that holds this code must never be unloaded.
#ifndef ZANENGINE_SERVER_SESSIONS_FIXSESSION_H
#define ZANENGINE_SERVER_SESSIONS_FIXSESSION_H

#include "server/sessions/FixMessage.h"
#include "server/sessions/FixSessionStore.h"
#include "server/sessions/MessageFault.h"

#include <chrono>
#include <cstddef>
#include <functional>
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
    storage,     ///< the store failed; what was to be stored has not happened
    closed,      ///< outside the session's hours
    session      ///< anything else: a sequence number too low, a Logon that is not acceptable ...
};

/// What a session reports. The receiver outlives the session.
///
/// Called from the session's thread and from whichever thread sends, by one at a time: `linkUp` and
/// `linkDown` without the store's turn, `logged`, `loggedOn` and `loggedOff` with it, `trouble`
/// either way. An implementation returns quickly (while it runs, the session stands still), does
/// not throw, and calls neither `start`, `stop` and `resetNumbers` nor the destructor of the
/// session. It may call everything else; what it sends is committed and reported before the call
/// returns.
class FixSessionEvents {
public:
    virtual ~FixSessionEvents();

    /// The link is open; both addresses are `host:port`.
    virtual void linkUp(std::string const& local, std::string const& remote) = 0;

    /// The link is closed, after `loggedOff` where the session was logged on. The reason, where it
    /// was no orderly logout, came by `trouble` before.
    virtual void linkDown() = 0;

    /// After `logged` with the Logons.
    virtual void loggedOn(int heartbeatSeconds) = 0;
    /// After `logged` with the Logouts, where there are any.
    virtual void loggedOff() = 0;

    /// These entries were committed, in the log's order, and what of them was for the wire is on
    /// its way. Called with the store's turn held, by whichever thread committed; the entries may
    /// be moved from. A message of the counterparty comes once, after the session has accepted it;
    /// a Logout that refuses our Logon too, its reason is in tag 58. What the session refuses comes
    /// as a remark, what it drops as a repetition of what was taken does not come.
    virtual void logged(std::vector<FixEntry>& entries) = 0;

    /// Something went wrong; `text` is for people and names what, where and why.
    virtual void trouble(FixTrouble kind, std::string const& text) = 0;
};

/// How a session is set up.
struct FixSessionSettings {
    /// QuickFIX's keys with their values. BeginString, SenderCompID and TargetCompID are required,
    /// HeartBtInt, SocketConnectHost and SocketConnectPort for an initiator; StartTime and EndTime
    /// are all day when they are not given; see SessionHours. Keys that choose QuickFIX's own data
    /// dictionaries, logs and stores have no effect here.
    std::vector<std::pair<std::string, std::string>> keys;
    /// Looks at what comes in; not owned, outlives the session. Without one everything whose fields
    /// are fields at all is taken.
    MessageCheck const* check = nullptr;
    bool takesEmptyValues = false; ///< ValidateFieldsHaveValues=N
    /// Where the numbers and the messages are kept: not owned, outlives the session. Without one
    /// the session keeps them itself, in memory, the newest 10,000 of the messages sent.
    FixSessionStore* store = nullptr;
    /// The time of day by which the session keeps its hours, in milliseconds since 1970-01-01
    /// 00:00:00 UTC; the system's when it is not given. Called from the session's threads.
    std::function<long long()> clock;
};

/// A message to be sent. Its fields go out exactly in their order. Those of the header are put into
/// the header, those of the trailer at the end; the session's own (8, 9, 34, 35, 49, 52, 56, 10)
/// are passed over.
struct FixOutgoing {
    std::string msgType;
    FixFields body;
    bool resent = false; ///< kept in the stream of what was sent again, under its new number
};

/// What became of the messages that were given to `FixSession::send`; where it is not `sent`,
/// nothing was stored and no number was used.
enum class FixSendResult {
    sent,        ///< they have their numbers, are stored, and are on their way
    notLoggedOn, ///< there is nobody to send to
    peerTooSlow, ///< the counterparty does not read
    busy,        ///< the store's turn was not free for too long
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
    /// `stop`, within the session's hours: outside of them it tells so and waits. Both numbers
    /// begin with 1 when the run of the session has ended in which they began. Returns at once;
    /// what happens is reported. Nothing happens when it runs already; where a logout is under way
    /// it waits for its end first. Not to be called by a report.
    virtual void start(FixFields const& logonFields) = 0;

    /// Sends a Logout with this text; the link closes when it is answered, or after LogoutTimeout
    /// seconds (2 when not set). There is no reconnecting after it. Returns at once. Where nobody
    /// is logged on the link just closes.
    virtual void requestLogout(std::string const& text) = 0;

    /// Closes the link without ceremony and ends the session's thread; on return no report is
    /// under way and none follows. `start` may be called again. Not to be called by a report.
    virtual void stop() = 0;

    /// Sends these messages in this order and in one transaction: all of them or none. `ids` are
    /// then the ids of their entries in the store. When too much is waiting for the counterparty to
    /// read, or the store's turn is not free, it waits up to `patience` for both together. Not to
    /// be called with the store's turn, but by a report of this session.
    virtual FixSendResult send(std::vector<FixOutgoing> const& messages,
                               std::chrono::milliseconds patience, std::vector<long>& ids) = 0;

    /// Both numbers become 1, with a remark in the store that tells this note, and every Logon asks
    /// the counterparty to begin with 1 too (ResetSeqNumFlag), until a logon succeeded, whichever
    /// process makes it: the store keeps that. For a session that is stopped. Throws
    /// std::runtime_error when the store fails; then nothing was changed. Not to be called by a
    /// report.
    virtual void resetNumbers(std::string const& note) = 0;

    /// Sets the numbers, with a remark in the store for each note; 0 leaves a number as it is. A
    /// reset that the counterparty was to be asked for is given up. Under the same conditions.
    virtual void setNumbers(FixNumbers numbers, std::vector<std::string> const& notes) = 0;

    virtual bool isLoggedOn() const = 0;

    /// How many bytes wait for the counterparty to take them.
    virtual std::size_t unsentBytes() const = 0;

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
