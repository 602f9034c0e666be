#include "server/engine/Connection.h"

#include "errors/ZANCannotConnectException.h"
#include "errors/ZANInvalidLogonException.h"
#include "errors/ZANInvalidMessageException.h"
#include "errors/ZANPersistentStorageException.h"
#include "infra/WrongConfigurationException.h"
#include "server/engine/ConnectionSetup.h"
#include "server/engine/EngineErrors.h"
#include "server/wire/FieldText.h"
#include "server/wire/Secrets.h"

#include <algorithm>
#include <utility>

namespace zan::server {

namespace {

using namespace std::chrono_literals;

// What a session may take beyond its own timeout to close a link.
constexpr std::chrono::milliseconds closingTime = 1s;

std::string nameOf(std::string const& user) {
    return user.empty() ? "an application without a user name" : user;
}

std::string numberNote(std::string const& direction, int number, std::string const& user) {
    return "the next sequence number " + direction + " set to " + std::to_string(number) + " by " +
           nameOf(user);
}

} // namespace

Connection::Connection(ConnectionSettings settings, std::string const& dataFolder, EventSink sink,
                       DiagnosticQueue& diagnostics)
    : settings_(std::move(settings)), ownDictionary_(loadDictionary(settings_)),
      dictionary_(*ownDictionary_), rules_(dictionary_, validationSettings(settings_)),
      hours_(hoursOf(settings_)), sink_(std::move(sink)), diary_(settings_.name, diagnostics),
      logFile_(logSettings(settings_, dataFolder).file), log_(logSettings(settings_, dataFolder)),
      queue_([this](Delivery const& delivery) { deliver(delivery); }, [this] { setReading(); },
             log_.lastId()),
      watch_([this](LinkState const& state) {
          diary_.stateChanged(state, log_.numbers());
          queue_.push(state);
      }),
      history_(log_, settings_, dictionary_,
               [this](std::string const& text) { trouble(FixTrouble::storage, text); }),
      sendQueue_([this](std::vector<FixOutgoing> const& messages, std::vector<long>& ids,
                        SendQueue::Clock::time_point deadline) {
          return sendTogether(messages, ids, deadline);
      }) {
    try {
        session_ = FixSession::initiator(sessionSettings(settings_, log_, rules_), *this);
    } catch (std::runtime_error const& e) {
        throw WrongConfigurationException(described(e.what()));
    }
}

Connection::~Connection() {
    session_->stop();
    queue_.stop(0ms);
}

void Connection::start(std::shared_ptr<void> owner) {
    queue_.start(std::move(owner), [this] { return takeListeners(); });
    isKeptConnecting_ = isConnectedAtStart();
    keepConnecting();
}

bool Connection::isConnectedAtStart() const {
    return settings_.valueOf("ConnectAtStart") == "Y";
}

// By the session's own hours and ReconnectInterval, until somebody disconnects.
void Connection::keepConnecting() {
    std::lock_guard const lock(lifecycle_);
    if (isKeptConnecting_) {
        diary_.connecting(addressOf(settings_));
        session_->start(logonFields());
    }
}

FixFields Connection::logonFields() const {
    std::lock_guard const lock(fieldsMutex_);
    return logonFields_;
}

std::string Connection::described(std::string const& what) const {
    return "connection " + name() + ": " + shownText(what);
}

void Connection::connect(ZANFieldGroup const* logonFields, std::string const& user) {
    auto const deadline = LinkWatch::Clock::now() + settings_.logonTimeout;
    FixFields fields;
    LogonNumbers numbers;
    try {
        if (logonFields) {
            numbers = logonNumbersOf(*logonFields);
            fields = withoutNumbers(logonFieldsFromModel(*logonFields, dictionary_));
        }
    } catch (MalformedMessage const& e) {
        fail<ZANInvalidMessageException>(described(e.what()));
    }
    std::unique_lock const attempt(connecting_, deadline);
    if (!attempt.owns_lock()) {
        throw ZANCannotConnectException(described("another attempt to connect takes too long"));
    }
    if (!watch_.isLoggedOn()) {
        requireOpen();
        setNumbers(numbers, user);
        logOn(fields, deadline);
    }
}

void Connection::requireOpen() {
    long long const now = infra::Time::now().getMillis();
    if (!hours_.isOpen(now)) {
        std::string const reason = hours_.closedText(now);
        trouble(FixTrouble::closed, reason);
        throw ZANCannotConnectException(described(reason));
    }
}

// The turn to connect is the caller's.
void Connection::setNumbers(LogonNumbers const& wanted, std::string const& user) {
    if (wanted.isReset) {
        endSession();
        resetNow(user);
    } else if (wanted.nextOut || wanted.nextIn) {
        endSession();
        FixNumbers const numbers{wanted.nextOut.value_or(0), wanted.nextIn.value_or(0)};
        std::vector<std::string> notes;
        if (wanted.nextOut) {
            notes.push_back(numberNote("out", numbers.nextOut, user));
        }
        if (wanted.nextIn) {
            notes.push_back(numberNote("in", numbers.nextIn, user));
        }
        history_.guarded([&] { session_->setNumbers(numbers, notes); });
    }
}

// The turn to connect is the caller's.
void Connection::logOn(FixFields const& fields, LinkWatch::Clock::time_point deadline) {
    diary_.connecting(addressOf(settings_));
    endSession();
    watch_.beginLogon();
    {
        std::lock_guard const lock(fieldsMutex_);
        logonFields_ = fields;
    }
    isKeptConnecting_ = isConnectedAtStart();
    session_->start(fields);
    LogonResult const result = watch_.waitForLogon(deadline);
    if (result.outcome != LogonResult::Outcome::LoggedOn) {
        endSession();
        diary_.notConnected(result.reason);
        keepConnecting();
        failToConnect(result);
    }
}

void Connection::failToConnect(LogonResult const& result) const {
    switch (result.outcome) {
    case LogonResult::Outcome::Refused:
        fail<ZANInvalidLogonException>(
            described("the counterparty refused the Logon: " + result.reason));
    case LogonResult::Outcome::NotStored:
        fail<ZANPersistentStorageException>(described(result.reason));
    default:
        throw ZANCannotConnectException(described(result.reason));
    }
}

void Connection::endSession() {
    std::lock_guard const lock(lifecycle_);
    session_->stop();
    watch_.stopped();
}

void Connection::disconnect(std::string const& reason) {
    isKeptConnecting_ = false;
    watch_.cancelLogon("disconnected by the application");
    std::chrono::seconds const patience(std::stol(settings_.valueOf("LogoutTimeout", "2")));
    if (watch_.isLoggedOn()) {
        diary_.disconnecting(reason);
        session_->requestLogout(reason);
        watch_.waitForLinkDown(LinkWatch::Clock::now() + patience + closingTime);
    }
    endSession();
}

void Connection::resetNumbers(std::string const& user) {
    auto const deadline = LinkWatch::Clock::now() + settings_.logonTimeout;
    std::unique_lock const attempt(connecting_, deadline);
    if (!attempt.owns_lock()) {
        throw ZANCannotConnectException(described("an attempt to connect takes too long"));
    }
    bool const wasLoggedOn = watch_.isLoggedOn();
    bool const wasKeptConnecting = isKeptConnecting_;
    disconnect("the sequence numbers are reset");
    resetNow(user);
    if (wasLoggedOn) {
        logOn(logonFields(), LinkWatch::Clock::now() + settings_.logonTimeout);
    } else {
        isKeptConnecting_ = wasKeptConnecting;
        keepConnecting();
    }
}

// For a session that is stopped.
void Connection::resetNow(std::string const& user) {
    history_.guarded(
        [&] { session_->resetNumbers("sequence numbers reset to 1 by " + nameOf(user)); });
}

bool Connection::ping(std::chrono::milliseconds timeout) {
    auto const deadline = LinkWatch::Clock::now() + timeout;
    if (!watch_.isLoggedOn()) {
        return false;
    }
    std::string const id = "PING-" + std::to_string(++pings_);
    watch_.expectAnswer(id);
    std::vector<long> ids;
    bool const isSent = session_->send({{"1", {{112, id}}}}, timeout, ids) == FixSendResult::sent;
    return watch_.waitForAnswer(id, isSent ? deadline : LinkWatch::Clock::now());
}

std::string Connection::properties() const {
    std::lock_guard const lock(fieldsMutex_);
    return propertiesText(settings_, logFile_, logonFields_);
}

void Connection::stop(std::string const& reason, std::chrono::milliseconds patience) {
    disconnect(reason);
    bool const isLate = !queue_.stop(patience) && patience > 0ms;
    if (isLate) {
        diary_.listenerTrouble("a listener does not return; it is left behind");
    }
    try {
        log_.flushMarks();
    } catch (LogFailure const& e) {
        diary_.listenerTrouble(e.what());
    }
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
    if (watch_.trouble(kind, text)) {
        diary_.trouble(kind, text);
    }
}

// Under the turn of the log, so that the queue has the log's order.
void Connection::logged(std::vector<FixEntry>& entries) {
    watch_.stored();
    traffic_.count(entries);
    diary_.logged(entries);
    std::erase_if(entries, [](FixEntry const& entry) { return !isDelivered(entry.origin); });
    for (FixEntry const& entry : entries) {
        if (entry.stream == FixStream::adminIn) {
            watch_.receivedAdmin(entry.text);
        } else if (entry.stream == FixStream::adminOut) {
            watch_.sentAdmin(entry.text);
        }
    }
    queue_.push(entries);
    if (!queue_.hasRoom()) {
        setReading();
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
