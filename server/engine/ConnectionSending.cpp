// How a connection sends and posts. What an application gives is checked before anything is stored.
#include "server/engine/Connection.h"

#include "errors/ZANConnectionUnavailableException.h"
#include "errors/ZANInvalidMessageException.h"
#include "errors/ZANNotConnectedException.h"
#include "errors/ZANPersistentStorageException.h"
#include "server/engine/EngineErrors.h"
#include "server/wire/FieldText.h"

#include <algorithm>
#include <mutex>
#include <utility>

namespace zan::server {

namespace {

using namespace std::chrono_literals;

// How long a send waits for a counterparty, or for listeners, that take nothing.
constexpr std::chrono::milliseconds sendPatience = 10s;

constexpr char const* isBusy = "the connection is busy with other work; nothing was stored";

std::chrono::milliseconds untilThen(SendQueue::Clock::time_point deadline) {
    auto const left = deadline - SendQueue::Clock::now();
    return std::max(std::chrono::duration_cast<std::chrono::milliseconds>(left), 0ms);
}

// Logons, logouts and the numbering are the session's: it would lose count.
bool isSessions(std::string const& type) {
    return type == "A" || type == "5" || type == "4";
}

void requireKind(MessageKind kind, OutgoingMessage const& message) {
    bool const isAdminMessage = message.isAdmin();
    if (isAdminMessage == (kind == MessageKind::Admin) && !isSessions(message.type)) {
        return;
    }
    std::string const type = "tag 35: message type " + message.type;
    if (!isAdminMessage) {
        throw MalformedMessage(type + " is an application message; sendMessage would be right");
    }
    if (kind == MessageKind::App) {
        throw MalformedMessage(type +
                               " is an administrative message; sendAdminMessage would be right");
    }
    throw MalformedMessage(type + " is sent by the engine itself; connect, disconnect or "
                                  "resetConnection would be right");
}

FixOutgoing forSession(OutgoingMessage message) {
    return {std::move(message.type), std::move(message.body), false};
}

} // namespace

template <class Convert>
OutgoingMessage Connection::converted(MessageKind kind, Convert convert) const {
    try {
        OutgoingMessage message = convert();
        requireKind(kind, message);
        return message;
    } catch (MalformedMessage const& e) {
        fail<ZANInvalidMessageException>(described(e.what()));
    }
}

std::vector<OutgoingMessage> Connection::converted(Messages const& messages) const {
    std::vector<OutgoingMessage> all;
    for (counted_ptr<ZANMessage> const& message : messages) {
        all.push_back(converted(MessageKind::App, [&] {
            try {
                return outgoingFromModel(fieldsOf(message), dictionary_);
            } catch (MalformedMessage const& e) {
                throw MalformedMessage("message " + std::to_string(all.size() + 1) + " of " +
                                       std::to_string(messages.size()) + ": " + e.what());
            }
        }));
    }
    return all;
}

long Connection::send(MessageKind kind, std::string const& text) {
    return sendAll(
               {forSession(converted(kind, [&] { return outgoingFromText(text, dictionary_); }))})
        .front();
}

long Connection::send(MessageKind kind, counted_ptr<ZANMessage> const& message) {
    return sendAll({forSession(converted(
                       kind, [&] { return outgoingFromModel(fieldsOf(message), dictionary_); }))})
        .front();
}

void Connection::send(Messages const& messages) {
    std::vector<FixOutgoing> all;
    for (OutgoingMessage& message : converted(messages)) {
        all.push_back(forSession(std::move(message)));
    }
    sendAll(std::move(all));
}

long Connection::resend(infra::Time const& from, infra::Time const& to, std::string const& filter) {
    return static_cast<long>(sendAll(history_.toResend(from, to, filter)).size());
}

std::vector<long> Connection::sendAll(std::vector<FixOutgoing> messages) {
    if (!watch_.isLoggedOn()) {
        failToSend(FixSendResult::notLoggedOn);
    }
    std::vector<long> ids;
    if (!messages.empty()) {
        auto const deadline = SendQueue::Clock::now() + sendPatience;
        waitForListeners(deadline);
        FixSendResult const result = sendQueue_.send(std::move(messages), ids, deadline);
        if (result != FixSendResult::sent) {
            failToSend(result);
        }
    }
    return ids;
}

void Connection::waitForListeners(SendQueue::Clock::time_point deadline) {
    if (!queue_.isDelivering() && !queue_.waitForRoom(untilThen(deadline))) {
        fail<ZANConnectionUnavailableException>(
            described("the listeners take no events; nothing was stored"));
    }
}

FixSendResult Connection::sendTogether(std::vector<FixOutgoing> const& messages,
                                       std::vector<long>& ids,
                                       SendQueue::Clock::time_point deadline) {
    FixSendResult const result = session_->send(messages, untilThen(deadline), ids);
    if (result == FixSendResult::sent) {
        watch_.setUnavailable(false, {});
    }
    return result;
}

void Connection::failToSend(FixSendResult result) {
    LinkState const state = watch_.state();
    if (result == FixSendResult::refused || state.has(FLAG_DB_ERROR)) {
        fail<ZANPersistentStorageException>(described(state.lastError));
    }
    if (result == FixSendResult::peerTooSlow) {
        std::string const text = "the counterparty does not read; nothing was sent";
        watch_.setUnavailable(true, text);
        fail<ZANConnectionUnavailableException>(described(text));
    }
    if (result == FixSendResult::busy) {
        fail<ZANConnectionUnavailableException>(described(isBusy));
    }
    fail<ZANNotConnectedException>(described("not logged on"));
}

long Connection::post(std::string const& text) {
    return postAll(
               {converted(MessageKind::App, [&] { return outgoingFromText(text, dictionary_); })})
        .front();
}

long Connection::post(counted_ptr<ZANMessage> const& message) {
    return postAll({converted(MessageKind::App,
                              [&] { return outgoingFromModel(fieldsOf(message), dictionary_); })})
        .front();
}

void Connection::post(Messages const& messages) {
    postAll(converted(messages));
}

std::vector<long> Connection::postAll(std::vector<OutgoingMessage> const& messages) {
    auto const deadline = SendQueue::Clock::now() + sendPatience;
    waitForListeners(deadline);
    std::vector<long> ids;
    history_.guarded([&] {
        if (!log_.lockUntil(deadline)) {
            fail<ZANConnectionUnavailableException>(described(isBusy));
        }
        std::lock_guard const turn(log_, std::adopt_lock);
        for (OutgoingMessage const& message : messages) {
            ids.push_back(log_.append(internalEntry(message, settings_)));
        }
        std::vector<FixEntry> entries = log_.commit();
        logged(entries);
    });
    return ids;
}

} // namespace zan::server
