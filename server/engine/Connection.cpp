#include "server/engine/Connection.h"

#include "errors/ZANCannotConnectException.h"
#include "errors/ZANConnectionUnavailableException.h"
#include "errors/ZANInvalidLogonException.h"
#include "errors/ZANInvalidMessageException.h"
#include "errors/ZANNotConnectedException.h"
#include "errors/ZANPersistentStorageException.h"
#include "infra/WrongConfigurationException.h"
#include "server/engine/ConnectionSetup.h"
#include "server/engine/EngineErrors.h"
#include "server/wire/FieldText.h"

#include <utility>

namespace zan::server {

namespace {

using namespace std::chrono_literals;

// How long a send waits for a counterparty, or for listeners, that take nothing.
constexpr std::chrono::milliseconds sendPatience = 10s;

// What a session may take beyond its own timeout to close a link.
constexpr std::chrono::milliseconds closingTime = 1s;

// The number of the message that the calling thread is sending, once the session has written it.
thread_local long* idOfSend = nullptr;

} // namespace

Connection::Connection(ConnectionSettings settings, std::string const& dataFolder, EventSink sink)
    : settings_(std::move(settings)), dictionary_(loadDictionary(settings_)),
      sink_(std::move(sink)), dataFolder_(dataFolder),
      queue_([this](Delivery const& delivery) { deliver(delivery); }, [this] { setReading(); }),
      watch_([this](LinkState const& state) { queue_.push(state); }) {
    try {
        session_ =
            FixSession::initiator(sessionSettings(settings_, dataFolder_, dictionary_), *this);
    } catch (std::runtime_error const& e) {
        throw WrongConfigurationException(described(e.what()));
    }
    queue_.start();
}

Connection::~Connection() {
    session_->stop();
    queue_.stop();
}

std::string Connection::described(std::string const& what) const {
    return "connection " + name() + ": " + what;
}

void Connection::connect(ZANFieldGroup const* logonFields) {
    auto const deadline = LinkWatch::Clock::now() + settings_.logonTimeout;
    FixFields fields;
    try {
        fields = logonFields ? logonFieldsFromModel(*logonFields, dictionary_) : FixFields{};
    } catch (MalformedMessage const& e) {
        fail<ZANInvalidMessageException>(described(e.what()));
    }
    std::unique_lock const attempt(connecting_, deadline);
    if (!attempt.owns_lock()) {
        throw ZANCannotConnectException(described("another attempt to connect takes too long"));
    }
    if (watch_.isLoggedOn()) {
        return;
    }
    endSession();
    watch_.beginLogon();
    {
        std::lock_guard const lock(fieldsMutex_);
        logonFields_ = fields;
    }
    session_->start(fields);
    LogonResult const result = watch_.waitForLogon(deadline);
    if (result.outcome != LogonResult::Outcome::LoggedOn) {
        endSession();
        failToConnect(result);
    }
}

void Connection::failToConnect(LogonResult const& result) const {
    if (result.outcome == LogonResult::Outcome::Refused) {
        fail<ZANInvalidLogonException>(
            described("the counterparty refused the Logon: " + result.reason));
    }
    throw ZANCannotConnectException(described(result.reason));
}

void Connection::endSession() {
    std::lock_guard const lock(lifecycle_);
    session_->stop();
    watch_.stopped();
}

void Connection::disconnect(std::string const& reason) {
    watch_.cancelLogon("disconnected by the application");
    std::chrono::seconds const patience(std::stol(settings_.valueOf("LogoutTimeout", "2")));
    if (watch_.isLoggedOn()) {
        session_->requestLogout(reason);
        watch_.waitForLinkDown(LinkWatch::Clock::now() + patience + closingTime);
    }
    endSession();
}

bool Connection::ping(std::chrono::milliseconds timeout) {
    auto const deadline = LinkWatch::Clock::now() + timeout;
    if (!watch_.isLoggedOn()) {
        return false;
    }
    std::string const id = "PING-" + std::to_string(++pings_);
    watch_.expectAnswer(id);
    bool const isSent = session_->send("1", {{112, id}}, timeout) == FixSendResult::sent;
    return watch_.waitForAnswer(id, isSent ? deadline : LinkWatch::Clock::now());
}

long Connection::send(MessageKind kind, std::string const& text) {
    try {
        return send(kind, outgoingFromText(text, dictionary_));
    } catch (MalformedMessage const& e) {
        fail<ZANInvalidMessageException>(described(e.what()));
    }
}

long Connection::send(MessageKind kind, counted_ptr<ZANMessage> const& message) {
    try {
        counted_ptr<ZANFieldGroup> const model =
            message ? message->getFieldGroup() : counted_ptr<ZANFieldGroup>();
        if (!model) {
            throw MalformedMessage("the message has no field group");
        }
        return send(kind, outgoingFromModel(*model, dictionary_));
    } catch (MalformedMessage const& e) {
        fail<ZANInvalidMessageException>(described(e.what()));
    }
}

long Connection::send(MessageKind kind, OutgoingMessage const& message) {
    // Logons, logouts and the numbering are the session's: it would lose count.
    bool const isSessions = message.type == "A" || message.type == "5" || message.type == "4";
    if (isSessions || message.isAdmin() != (kind == MessageKind::Admin)) {
        refuse(kind, message);
    }
    if (!watch_.isLoggedOn()) {
        fail<ZANNotConnectedException>(described("not logged on"));
    }
    if (!queue_.isDelivering() && !queue_.waitForRoom(sendPatience)) {
        fail<ZANConnectionUnavailableException>(
            described("the listeners take no events; nothing was sent"));
    }
    return sendNow(message);
}

void Connection::refuse(MessageKind kind, OutgoingMessage const& message) const {
    std::string const type = "tag 35: message type " + message.type;
    if (!message.isAdmin()) {
        throw MalformedMessage(type + " is an application message; sendMessage would be right");
    }
    if (kind == MessageKind::App) {
        throw MalformedMessage(type +
                               " is an administrative message; sendAdminMessage would be right");
    }
    throw MalformedMessage(type + " is sent by the engine itself; connect, disconnect or "
                                  "resetConnection would be right");
}

long Connection::sendNow(OutgoingMessage const& message) {
    long id = 0;
    idOfSend = &id;
    FixSendResult const result = session_->send(message.type, message.body, sendPatience);
    idOfSend = nullptr;
    switch (result) {
    case FixSendResult::sent:
        return id;
    case FixSendResult::notLoggedOn:
        fail<ZANNotConnectedException>(described("not logged on"));
    case FixSendResult::peerTooSlow:
        fail<ZANConnectionUnavailableException>(
            described("the counterparty does not read; nothing was sent"));
    case FixSendResult::refused:
        break;
    }
    fail<ZANPersistentStorageException>(described(watch_.state().lastError));
}

std::string Connection::properties() const {
    std::lock_guard const lock(fieldsMutex_);
    return propertiesText(settings_, dataFolder_, logonFields_);
}

void Connection::stop(std::string const& reason) {
    disconnect(reason);
    queue_.stop();
}

void Connection::linkUp(std::string const& local, std::string const& remote) {
    watch_.linkUp(local, remote);
}

void Connection::linkDown() {
    watch_.linkDown();
}

void Connection::loggedOn(int heartbeatSeconds) {
    watch_.loggedOn(heartbeatSeconds);
}

void Connection::loggedOff() {
    watch_.loggedOff();
}

void Connection::trouble(FixTrouble kind, std::string const& text) {
    watch_.trouble(kind, text);
}

void Connection::received(std::string const& message, bool admin) {
    queue_.push(message, admin);
    if (admin) {
        watch_.receivedAdmin(message);
    }
    if (!queue_.hasRoom()) {
        setReading();
    }
}

void Connection::sent(std::string const& message, bool admin) {
    long const id = queue_.push(message, admin);
    if (idOfSend) {
        *std::exchange(idOfSend, nullptr) = id;
    }
    if (admin) {
        watch_.sentAdmin(message);
    }
}

// The session's thread holds the link back, the delivery thread lets it go on. Neither may hold a
// lock while it calls the session, so each looks again whether its answer still holds.
void Connection::setReading() {
    bool mayRead = false;
    do {
        mayRead = queue_.hasRoom();
        session_->setReading(mayRead);
    } while (mayRead != queue_.hasRoom());
}

} // namespace zan::server
