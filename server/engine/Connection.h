/// One named connection of the engine: its session, its state, its message log, and the delivery of
/// what happens to its listeners.
///
/// Threads: any, unless an operation says otherwise. Listeners are called on the connection's own
/// delivery thread, without a lock, and may call every operation.
#ifndef ZANENGINE_SERVER_ENGINE_CONNECTION_H
#define ZANENGINE_SERVER_ENGINE_CONNECTION_H

#include "events/ZANEvent.h"
#include "infra/counted_ptr.h"
#include "message/ZANMessage.h"
#include "server/config/SessionFile.h"
#include "server/engine/ConnectionDiary.h"
#include "server/engine/ConnectionFigures.h"
#include "server/engine/DeliveryQueue.h"
#include "server/engine/LinkWatch.h"
#include "server/engine/LogonNumbers.h"
#include "server/engine/MessageHistory.h"
#include "server/engine/SendQueue.h"
#include "server/engine/Subscribers.h"
#include "server/engine/TimedTurn.h"
#include "server/engine/TrafficCounters.h"
#include "server/log/MessageLog.h"
#include "server/sessions/FixSession.h"
#include "server/sessions/SessionHours.h"
#include "server/wire/MessageRules.h"
#include "server/wire/OutgoingMessage.h"

#include <array>
#include <atomic>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace zan::server {

/// Takes every event of the engine, on the delivery threads of its connections. What it throws is
/// reported in one line, and the delivery goes on.
using EventSink = std::function<void(counted_ptr<ZANEvent> const&)>;

/// Which of the two kinds of messages an operation sends.
enum class MessageKind { Admin, App };

class Connection final : private FixSessionEvents {
public:
    /// Throws `WrongConfigurationException` when the session or its log cannot be set up so, and
    /// `LogFailure` when the log cannot be read. The queue outlives the connection.
    Connection(ConnectionSettings settings, std::string const& dataFolder, EventSink sink,
               DiagnosticQueue& diagnostics);

    ~Connection() override;
    Connection(Connection const&) = delete;
    Connection& operator=(Connection const&) = delete;

    /// Begins to deliver, and to connect where ConnectAtStart says so; the delivery thread holds
    /// `owner`, which has this connection, until it ends.
    void start(std::shared_ptr<void> owner);

    std::string const& name() const { return settings_.name; }

    /// Logs on, adding these fields to the Logon; they stand until the next `connect`. Null is no
    /// fields. 34, 789 and 141=Y among them set the numbers before; the log tells that `user` did
    /// it. Returns at once, without doing any of this, when the session is logged on. Throws
    /// `ZANInvalidMessageException` for fields that cannot be used,
    /// `ZANCannotConnectException`, outside the session's hours at once,
    /// `ZANInvalidLogonException` with the counterparty's words, or
    /// `ZANPersistentStorageException`, no later than the LogonTimeout. After a failure nothing
    /// goes on in the background, but with ConnectAtStart; after a success the session logs on
    /// again by itself whenever the link is lost.
    void connect(ZANFieldGroup const* logonFields, std::string const& user);

    /// Logs out and closes the link; returns when it is closed. Ends an attempt to connect, and
    /// those that go on by themselves, until the next `connect`.
    void disconnect(std::string const& reason);

    /// Both sequence numbers are 1 again, here and, with the next Logon, at the counterparty. A
    /// session that is logged on logs out before and on again after it, and throws like `connect`.
    /// The log tells that `user` did it.
    void resetNumbers(std::string const& user);

    /// True when the counterparty answered a test request in this time.
    bool ping(std::chrono::milliseconds timeout);

    bool isConnected() const { return watch_.isLoggedOn(); }

    // Sending and posting return the message's number within the connection, or how many were sent,
    // once everything is committed to the log. They throw `ZANInvalidMessageException`,
    // `ZANPersistentStorageException`, and `ZANConnectionUnavailableException` when the
    // counterparty or the listeners take nothing for too long; sending also
    // `ZANNotConnectedException`. Several messages are stored in one transaction, all or none.

    long send(MessageKind kind, std::string const& text);
    long send(MessageKind kind, counted_ptr<ZANMessage> const& message);
    void send(Messages const& messages);
    long resend(infra::Time const& from, infra::Time const& to, std::string const& filter);

    /// Stores messages for the listeners; the counterparty does not get them.
    long post(std::string const& text);
    long post(counted_ptr<ZANMessage> const& message);
    void post(Messages const& messages);

    LinkState state() const { return watch_.state(); }

    /// One `key=value` a line, without secrets.
    std::string properties() const;

    /// What operators may want to know; takes no lock for long.
    ConnectionFigures figures() const;

    /// What an operator has to see to, one line each. A connection that is logged off is well.
    std::vector<std::string> ailments() const;

    Subscribers& subscribers() { return subscribers_; }
    MessageHistory& history() { return history_; }
    MessageLog& log() { return log_; }

    /// Delivers again what lies above the marks of the guaranteed listeners that have this filter
    /// and passes it. The future is ready when that is done, or stopped before a message on which a
    /// listener fails; it is broken when the connection has stopped.
    std::future<void> redeliver(std::shared_ptr<MessageFilter> const& filter);

    /// Logs out, delivers what waits, and ends all threads. A listener that does not return in
    /// `patience` is left behind: the delivery thread ends after it.
    void stop(std::string const& reason, std::chrono::milliseconds patience);

    /// To be called every few hundred milliseconds: keeps the log in order, notices that it takes
    /// messages again, and tells an operator of a listener that does not return.
    void maintain();

    /// Whether the caller is a listener of this connection.
    bool isDelivering() const { return queue_.isDelivering(); }

private:
    void linkUp(std::string const& local, std::string const& remote) override;
    void linkDown() override;
    void loggedOn(int heartbeatSeconds) override;
    void loggedOff() override;
    void logged(std::vector<FixEntry>& entries) override;
    void trouble(FixTrouble kind, std::string const& text) override;

    void logOn(FixFields const& fields, LinkWatch::Clock::time_point deadline);
    bool isConnectedAtStart() const;
    void keepConnecting();
    void requireOpen();
    void setNumbers(LogonNumbers const& numbers, std::string const& user);
    void resetNow(std::string const& user);
    FixFields logonFields() const;
    void endSession();
    void setReading();
    FixSendResult sendTogether(std::vector<FixOutgoing> const& messages, std::vector<long>& ids,
                               SendQueue::Clock::time_point deadline);
    std::vector<long> sendAll(std::vector<FixOutgoing> messages);
    std::vector<long> postAll(std::vector<OutgoingMessage> const& messages);
    void waitForListeners(SendQueue::Clock::time_point deadline);
    bool isListenerStuck() const;
    std::vector<MarkFigures> markFigures() const;
    long newestDelivered(FixStream stream) const;
    [[noreturn]] void failToSend(FixSendResult result);
    [[noreturn]] void failToConnect(LogonResult const& result) const;
    std::string described(std::string const& what) const;
    template <class Convert>
    OutgoingMessage converted(MessageKind kind, Convert convert) const;
    std::vector<OutgoingMessage> converted(Messages const& messages) const;

    // Delivery; all of it on the delivery thread.

    void deliver(Delivery const& delivery);
    void deliverMessage(FixEntry const& entry);
    void deliverState(LinkState const& state);
    counted_ptr<ZANEvent> eventOf(FixEntry const& entry, Showing showing) const;
    static bool EventKinds::*kindOf(FixEntry const& entry);
    template <class Subject, class Call>
    void guarded(Subject const& subject, Call const& call) noexcept;
    void letGo(std::vector<Subscribers::Shared> called);
    std::shared_ptr<void> takeListeners();

    // Guaranteed listeners, and how they catch up; on the delivery thread but for
    // `maintainStreams`, `queueCatchUp` and `listenerFailures`.

    bool isWanted(FixEntry const& entry, GuaranteedStream& stream);
    void deliverLive(FixEntry const& entry, counted_ptr<ZANEvent> const& event,
                     Subscriber const& subscriber) noexcept;
    void holdBack(FixEntry const& entry, char const* reason);
    void stopBefore(FixEntry const& entry, GuaranteedStream& stream, char const* reason,
                    bool wasShown);
    void settled(GuaranteedStream const& stream);
    std::string listenerFailures() const;
    void maintainStreams();
    void queueCatchUp();
    void catchUpAll();
    void catchUp(Subscriber const& subscriber);
    bool show(FixEntry const& entry, bool isPossiblyLost, Subscriber const& subscriber);
    /// False when the patience with the listeners was over before the end.
    bool redeliverUpTo(long lastId, MessageFilter const& filter);
    void startOver(Subscriber const& subscriber, long lastId);

    ConnectionSettings const settings_;
    std::shared_ptr<CompiledDictionary const> const ownDictionary_;
    CompiledDictionary const& dictionary_;
    MessageRules const rules_;
    SessionHours const hours_;
    EventSink const sink_;
    ConnectionDiary diary_;
    TrafficCounters traffic_;
    std::string const logFile_;
    MessageLog log_;
    Subscribers subscribers_;
    DeliveryQueue queue_;
    LinkWatch watch_;
    MessageHistory history_;
    std::unique_ptr<FixSession> session_;
    SendQueue sendQueue_;
    TimedTurn connecting_; // one attempt to connect at a time
    std::mutex lifecycle_; // one start or stop of the session at a time
    mutable std::mutex fieldsMutex_;
    FixFields logonFields_;
    std::atomic<bool> isKeptConnecting_{false};
    std::atomic<long> pings_{0};
    long lastHandled_ = 0; // the newest message that was delivered as it happened
    std::vector<Subscribers::Shared> endingLast_; // of the delivery thread
    std::atomic<bool> isCatchUpQueued_{false};
    bool isStuckReported_ = false; // of `maintain` alone
    mutable std::mutex newestMutex_;
    mutable std::array<std::optional<long>, streamCount> newestOfBefore_;
};

} // namespace zan::server

#endif
