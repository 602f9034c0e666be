/// One named connection of the engine: its session, its state, and the delivery of what happens to
/// its listeners.
///
/// Threads: any, unless an operation says otherwise. Listeners are called on the connection's own
/// delivery thread, without a lock, and may call every operation.
#ifndef ZANENGINE_SERVER_ENGINE_CONNECTION_H
#define ZANENGINE_SERVER_ENGINE_CONNECTION_H

#include "events/ZANEvent.h"
#include "infra/counted_ptr.h"
#include "message/ZANMessage.h"
#include "server/config/SessionFile.h"
#include "server/engine/DeliveryQueue.h"
#include "server/engine/LinkWatch.h"
#include "server/engine/Subscribers.h"
#include "server/engine/TimedTurn.h"
#include "server/sessions/FixSession.h"
#include "server/wire/OutgoingMessage.h"

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

namespace zan::server {

/// Takes every event of the engine, on the delivery threads of its connections. What it throws is
/// reported in one line, and the delivery goes on.
using EventSink = std::function<void(counted_ptr<ZANEvent> const&)>;

/// Which of the two kinds of messages an operation sends.
enum class MessageKind { Admin, App };

class Connection final : private FixSessionEvents {
public:
    /// Throws `WrongConfigurationException` when the session cannot be set up so.
    Connection(ConnectionSettings settings, std::string const& dataFolder, EventSink sink);

    /// Stops the connection.
    ~Connection() override;
    Connection(Connection const&) = delete;
    Connection& operator=(Connection const&) = delete;

    std::string const& name() const { return settings_.name; }

    /// Logs on, adding these fields to the Logon; they stand until the next `connect`. Returns at
    /// once when the session is logged on. Throws `ZANCannotConnectException`, or
    /// `ZANInvalidLogonException` with the counterparty's words, no later than the LogonTimeout.
    /// After a failure nothing goes on in the background; after a success the session logs on again
    /// by itself whenever the link is lost. Null is no fields.
    void connect(ZANFieldGroup const* logonFields);

    /// Logs out and closes the link; returns when it is closed. Ends an attempt to connect.
    void disconnect(std::string const& reason);

    /// True when the counterparty answered a test request in this time.
    bool ping(std::chrono::milliseconds timeout);

    bool isConnected() const { return watch_.isLoggedOn(); }

    /// Sends a message and returns its number within the connection. Throws
    /// `ZANInvalidMessageException`, `ZANNotConnectedException`,
    /// `ZANConnectionUnavailableException` when the counterparty or the listeners take nothing for
    /// too long, and `ZANPersistentStorageException`.
    long send(MessageKind kind, std::string const& text);
    long send(MessageKind kind, counted_ptr<ZANMessage> const& message);

    LinkState state() const { return watch_.state(); }

    /// One `key=value` a line, without secrets.
    std::string properties() const;

    Subscribers& subscribers() { return subscribers_; }

    /// Logs out, delivers what waits, and ends all threads. Not from a listener.
    void stop(std::string const& reason);

    /// Whether the caller is a listener of this connection.
    bool isDelivering() const { return queue_.isDelivering(); }

private:
    void linkUp(std::string const& local, std::string const& remote) override;
    void linkDown() override;
    void loggedOn(int heartbeatSeconds) override;
    void loggedOff() override;
    void received(std::string const& message, bool admin) override;
    void sent(std::string const& message, bool admin) override;
    void trouble(FixTrouble kind, std::string const& text) override;

    void endSession();
    void setReading();
    long send(MessageKind kind, OutgoingMessage const& message);
    long sendNow(OutgoingMessage const& message);
    [[noreturn]] void refuse(MessageKind kind, OutgoingMessage const& message) const;
    [[noreturn]] void failToConnect(LogonResult const& result) const;
    std::string described(std::string const& what) const;

    void deliver(Delivery const& delivery);
    void deliverMessage(WireMessage const& message);
    void deliverState(LinkState const& state);
    template <class Call>
    void guarded(std::string const& what, Call call) const;

    ConnectionSettings const settings_;
    GroupDictionary const dictionary_;
    EventSink const sink_;
    std::string const dataFolder_;
    Subscribers subscribers_;
    DeliveryQueue queue_;
    LinkWatch watch_;
    std::unique_ptr<FixSession> session_;
    TimedTurn connecting_; // one attempt to connect at a time
    std::mutex lifecycle_; // one start or stop of the session at a time
    mutable std::mutex fieldsMutex_;
    FixFields logonFields_;
    std::atomic<long> pings_{0};
};

} // namespace zan::server

#endif
