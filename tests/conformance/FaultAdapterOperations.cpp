// The engine operations, each handed on with the faults that the script has for it.
#include "conformance/FaultAdapter.h"

#include "errors/ZANConnectionUnknownException.h"

namespace zan::conformance {

namespace {

std::string innerName(std::string const& name) {
    std::string const& prefix = FaultAdapter::prefix();
    if (!name.starts_with(prefix)) {
        throw ZANConnectionUnknownException(ZANConnectionUnknownException().getType() +
                                            ": there is no connection " + name +
                                            ": names begin with " + prefix + " here");
    }
    return name.substr(prefix.size());
}

} // namespace

/// One call, which is done when this goes.
class FaultAdapter::Turn {
public:
    Turn(CallCounts& counts, char const* operation)
        : counts_(counts), operation_(operation), number_(counts.begin(operation)) {}
    Turn(Turn const&) = delete;
    Turn& operator=(Turn const&) = delete;
    ~Turn() { counts_.end(operation_, number_); }

    int number() const { return number_; }

private:
    CallCounts& counts_;
    std::string const operation_;
    int const number_;
};

template <class Call>
auto FaultAdapter::forward(char const* operation, Call call) const {
    Turn const turn(counts_, operation);
    using Answer = decltype(call());
    return begin(operation, turn.number()) ? call() : Answer();
}

template <class Call>
auto FaultAdapter::pass(char const* operation, Call call) {
    listenToTheInnerOne();
    return forward(operation, call);
}

template <class Answer, class Call>
Answer& FaultAdapter::passInto(Answer& out, char const* operation, Call call) {
    listenToTheInnerOne();
    Turn const turn(counts_, operation);
    return begin(operation, turn.number()) ? call() : out;
}

void FaultAdapter::initialize() {
    forward("initialize", [&] { inner_->initialize(); });
}

void FaultAdapter::uninitialize() {
    forward("uninitialize", [&] { inner_->uninitialize(); });
}

bool FaultAdapter::isThreadSafe() {
    return inner_->isThreadSafe();
}

ZANGMLAdapterFactory& FaultAdapter::getGMLAdapterFactory() {
    return inner_->getGMLAdapterFactory();
}

void FaultAdapter::getConnectionNameList(Ticket ticket, std::vector<std::string>& names) {
    pass("getConnectionNameList", [&] {
        std::vector<std::string> found;
        inner_->getConnectionNameList(ticket, found);
        for (std::string const& each : found) {
            names.push_back(prefix() + each);
        }
    });
}

void FaultAdapter::subscribeDirect(Ticket ticket, Name name, bool admin, bool app, bool state,
                                   Listener listener) {
    pass("subscribeDirect", [&] {
        if (!listener) {
            inner_->subscribeDirect(ticket, innerName(name), admin, app, state, listener);
            return;
        }
        bool const isNew = !hasRelay(listener);
        try {
            inner_->subscribeDirect(ticket, innerName(name), admin, app, state, relayOf(listener));
        } catch (...) {
            if (isNew) {
                retireRelayOf(listener);
            }
            throw;
        }
    });
}

void FaultAdapter::unsubscribeDirect(Ticket ticket, Name name, bool admin, bool app, bool state,
                                     Listener listener) {
    pass("unsubscribeDirect", [&] {
        inner_->unsubscribeDirect(ticket, innerName(name), admin, app, state,
                                  hasRelay(listener) ? relayOf(listener) : listener);
    });
}

void FaultAdapter::destroyDirectSubscriber(Listener listener) {
    pass("destroyDirectSubscriber", [&] {
        inner_->destroyDirectSubscriber(hasRelay(listener) ? relayOf(listener) : listener);
        retireRelayOf(listener);
    });
}

void FaultAdapter::destroyDirectSubscriber(GuaranteedListener listener) {
    pass("destroyDirectSubscriber", [&] { inner_->destroyDirectSubscriber(listener); });
}

std::int64_t FaultAdapter::getMillisTime(Ticket ticket) {
    return pass("getMillisTime", [&] { return inner_->getMillisTime(ticket); });
}

void FaultAdapter::connect(Ticket ticket, Name name, counted_ptr<ZANFieldGroup> logonFields) {
    pass("connect", [&] { inner_->connect(ticket, innerName(name), logonFields); });
}

void FaultAdapter::connect(Ticket ticket, Name name) {
    pass("connect", [&] { inner_->connect(ticket, innerName(name)); });
}

void FaultAdapter::disconnect(Ticket ticket, Name name, Text reason) {
    pass("disconnect", [&] { inner_->disconnect(ticket, innerName(name), reason); });
}

void FaultAdapter::resetConnection(Ticket ticket, Name name) {
    pass("resetConnection", [&] { inner_->resetConnection(ticket, innerName(name)); });
}

bool FaultAdapter::pingConnection(Ticket ticket, Name name, long timeoutMillis) {
    return pass("pingConnection",
                [&] { return inner_->pingConnection(ticket, innerName(name), timeoutMillis); });
}

bool FaultAdapter::isConnected(Ticket ticket, Name name) {
    return pass("isConnected", [&] { return inner_->isConnected(ticket, innerName(name)); });
}

void FaultAdapter::subscribeDirect(Ticket ticket, Name name, bool admin, bool app, bool state,
                                   GuaranteedListener listener) {
    pass("subscribeDirect",
         [&] { inner_->subscribeDirect(ticket, innerName(name), admin, app, state, listener); });
}

void FaultAdapter::unsubscribeDirect(Ticket ticket, Name name, bool admin, bool app, bool state,
                                     GuaranteedListener listener) {
    pass("unsubscribeDirect",
         [&] { inner_->unsubscribeDirect(ticket, innerName(name), admin, app, state, listener); });
}

long FaultAdapter::sendAdminMessage(Ticket ticket, Name name, Text message) {
    return pass("sendAdminMessage",
                [&] { return inner_->sendAdminMessage(ticket, innerName(name), message); });
}

long FaultAdapter::sendAdminMessage(Ticket ticket, Name name, Message message) {
    return pass("sendAdminMessage",
                [&] { return inner_->sendAdminMessage(ticket, innerName(name), message); });
}

long FaultAdapter::resendMessages(Ticket ticket, Name name, infra::Time const& from,
                                  infra::Time const& to, Text filter) {
    return pass("resendMessages",
                [&] { return inner_->resendMessages(ticket, innerName(name), from, to, filter); });
}

FaultAdapter::Messages& FaultAdapter::retrieveMessagesByDateRange(Ticket ticket, Name name,
                                                                  Messages& out, long stream,
                                                                  infra::Time const& from,
                                                                  infra::Time const& to,
                                                                  Text filter, bool newestFirst) {
    return passInto(out, "retrieveMessagesByDateRange", [&]() -> Messages& {
        return inner_->retrieveMessagesByDateRange(ticket, innerName(name), out, stream, from, to,
                                                   filter, newestFirst);
    });
}

FaultAdapter::Messages& FaultAdapter::retrieveMessagesByDateRange(Ticket ticket, Name name,
                                                                  Messages& out,
                                                                  infra::Time const& from,
                                                                  infra::Time const& to,
                                                                  Text filter, bool newestFirst) {
    return passInto(out, "retrieveMessagesByDateRange", [&]() -> Messages& {
        return inner_->retrieveMessagesByDateRange(ticket, innerName(name), out, from, to, filter,
                                                   newestFirst);
    });
}

FaultAdapter::Messages& FaultAdapter::retrieveMessagesByIdRange(Ticket ticket, Name name,
                                                                Messages& out, long stream,
                                                                long fromId, long toId, Text filter,
                                                                bool newestFirst) {
    return passInto(out, "retrieveMessagesByIdRange", [&]() -> Messages& {
        return inner_->retrieveMessagesByIdRange(ticket, innerName(name), out, stream, fromId, toId,
                                                 filter, newestFirst);
    });
}

FaultAdapter::Messages& FaultAdapter::retrieveMessagesByIdSet(Ticket ticket, Name name,
                                                              Messages& out, long stream,
                                                              std::vector<int> const& ids,
                                                              Text filter, bool newestFirst) {
    return passInto(out, "retrieveMessagesByIdSet", [&]() -> Messages& {
        return inner_->retrieveMessagesByIdSet(ticket, innerName(name), out, stream, ids, filter,
                                               newestFirst);
    });
}

FaultAdapter::Messages& FaultAdapter::retrieveMessagesByQuery(Ticket ticket, Name name,
                                                              Messages& out, long stream,
                                                              Text where, Text orderBy,
                                                              bool newestFirst) {
    return passInto(out, "retrieveMessagesByQuery", [&]() -> Messages& {
        return inner_->retrieveMessagesByQuery(ticket, innerName(name), out, stream, where, orderBy,
                                               newestFirst);
    });
}

FaultAdapter::Messages& FaultAdapter::retrieveMessageChain(
    Ticket ticket, Name name, Messages& out, std::vector<int> const& ids,
    std::vector<std::string> const& clientOrderIds, bool newestFirst) {
    return passInto(out, "retrieveMessageChain", [&]() -> Messages& {
        return inner_->retrieveMessageChain(ticket, innerName(name), out, ids, clientOrderIds,
                                            newestFirst);
    });
}

FaultAdapter::Messages& FaultAdapter::retrieveMessagesForResend(Ticket ticket, Name name,
                                                                Messages& out, long fromSequence,
                                                                long toSequence, Text filter) {
    return passInto(out, "retrieveMessagesForResend", [&]() -> Messages& {
        return inner_->retrieveMessagesForResend(ticket, innerName(name), out, fromSequence,
                                                 toSequence, filter);
    });
}

FaultAdapter::Table& FaultAdapter::retrieveMessageLogData(Ticket ticket, Name name, long stream,
                                                          Text columns, Text where, Text orderBy,
                                                          Table& out) {
    return passInto(out, "retrieveMessageLogData", [&]() -> Table& {
        return inner_->retrieveMessageLogData(ticket, innerName(name), stream, columns, where,
                                              orderBy, out);
    });
}

long FaultAdapter::updateMessageLogData(Ticket ticket, Name name, long stream, Text assignments,
                                        Text where) {
    return pass("updateMessageLogData", [&] {
        return inner_->updateMessageLogData(ticket, innerName(name), stream, assignments, where);
    });
}

long FaultAdapter::insertMessageLogData(Ticket ticket, Name name, Messages const& messages) {
    return pass("insertMessageLogData",
                [&] { return inner_->insertMessageLogData(ticket, innerName(name), messages); });
}

long FaultAdapter::deleteMessageLogData(Ticket ticket, Name name, long stream, Text where) {
    return pass("deleteMessageLogData", [&] {
        return inner_->deleteMessageLogData(ticket, innerName(name), stream, where);
    });
}

counted_ptr<ZANConnectionState> FaultAdapter::getConnectionState(Ticket ticket, Name name) const {
    return forward("getConnectionState",
                   [&] { return inner_->getConnectionState(ticket, innerName(name)); });
}

std::vector<int> FaultAdapter::getMessageIds(Ticket ticket, Name name, long stream,
                                             bool newestFirst) {
    return pass("getMessageIds", [&] {
        return inner_->getMessageIds(ticket, innerName(name), stream, newestFirst);
    });
}

std::string FaultAdapter::getConnectionProperties(Ticket ticket, Name name) {
    return pass("getConnectionProperties",
                [&] { return inner_->getConnectionProperties(ticket, innerName(name)); });
}

long FaultAdapter::sendMessage(Ticket ticket, Name name, Text message) {
    return pass("sendMessage",
                [&] { return inner_->sendMessage(ticket, innerName(name), message); });
}

long FaultAdapter::sendMessage(Ticket ticket, Name name, Message message) {
    return pass("sendMessage",
                [&] { return inner_->sendMessage(ticket, innerName(name), message); });
}

void FaultAdapter::sendMultipleMessages(Ticket ticket, Name name, Messages const& messages) {
    pass("sendMultipleMessages",
         [&] { inner_->sendMultipleMessages(ticket, innerName(name), messages); });
}

long FaultAdapter::postInternalMessage(Ticket ticket, Name name, Text message) {
    return pass("postInternalMessage",
                [&] { return inner_->postInternalMessage(ticket, innerName(name), message); });
}

long FaultAdapter::postInternalMessage(Ticket ticket, Name name, Message message) {
    return pass("postInternalMessage",
                [&] { return inner_->postInternalMessage(ticket, innerName(name), message); });
}

void FaultAdapter::postMultipleInternalMessages(Ticket ticket, Name name,
                                                Messages const& messages) {
    pass("postMultipleInternalMessages",
         [&] { inner_->postMultipleInternalMessages(ticket, innerName(name), messages); });
}

} // namespace zan::conformance
