// The engine operations of the facade: each is the adapter's operation of the same name.
#include "engine/ScopedGuard.h"
#include "engine/ZANEngineProxy.h"

// Calls the adapter under the adapter mutex. An adapter that is safe for threads has a mutex that
// does nothing, and is not even asked to lock it. The copies of counted arguments that `call`
// makes for the adapter come and go under the mutex.
template <class Call>
decltype(auto) ZANEngineProxy::forward(Call call) {
    if (adapterIsThreadSafe_) {
        return call(getAdapter());
    }
    ScopedGuard const guard(AdapterMutex_);
    return call(getAdapter());
}

void ZANEngineProxy::connect(UserTicket const& ticket, std::string const& connectionName,
                             counted_ptr<ZANFieldGroup> logonFields) {
    return forward([&](IZANEngineAdapter& adapter) {
        return adapter.connect(ticket, connectionName, logonFields);
    });
}

void ZANEngineProxy::connect(UserTicket const& ticket, std::string const& connectionName) {
    return forward(
        [&](IZANEngineAdapter& adapter) { return adapter.connect(ticket, connectionName); });
}

void ZANEngineProxy::disconnect(UserTicket const& ticket, std::string const& connectionName,
                                std::string const& reason) {
    return forward([&](IZANEngineAdapter& adapter) {
        return adapter.disconnect(ticket, connectionName, reason);
    });
}

void ZANEngineProxy::resetConnection(UserTicket const& ticket, std::string const& connectionName) {
    return forward([&](IZANEngineAdapter& adapter) {
        return adapter.resetConnection(ticket, connectionName);
    });
}

bool ZANEngineProxy::pingConnection(UserTicket const& ticket, std::string const& connectionName,
                                    long timeoutMillis) {
    return forward([&](IZANEngineAdapter& adapter) {
        return adapter.pingConnection(ticket, connectionName, timeoutMillis);
    });
}

bool ZANEngineProxy::isConnected(UserTicket const& ticket, std::string const& connectionName) {
    return forward(
        [&](IZANEngineAdapter& adapter) { return adapter.isConnected(ticket, connectionName); });
}

void ZANEngineProxy::getConnectionNameList(UserTicket const& ticket,
                                           std::vector<std::string>& connectionNames) {
    return forward([&](IZANEngineAdapter& adapter) {
        return adapter.getConnectionNameList(ticket, connectionNames);
    });
}

void ZANEngineProxy::subscribeDirect(UserTicket const& ticket, std::string const& connectionName,
                                     bool adminEvents, bool appEvents, bool stateEvents,
                                     counted_ptr<ZANGuaranteedEngineMessageListener>& listener) {
    return forward([&](IZANEngineAdapter& adapter) {
        return adapter.subscribeDirect(ticket, connectionName, adminEvents, appEvents, stateEvents,
                                       listener);
    });
}

void ZANEngineProxy::subscribeDirect(UserTicket const& ticket, std::string const& connectionName,
                                     bool adminEvents, bool appEvents, bool stateEvents,
                                     counted_ptr<IZANEventListener>& listener) {
    return forward([&](IZANEngineAdapter& adapter) {
        return adapter.subscribeDirect(ticket, connectionName, adminEvents, appEvents, stateEvents,
                                       listener);
    });
}

void ZANEngineProxy::unsubscribeDirect(UserTicket const& ticket, std::string const& connectionName,
                                       bool adminEvents, bool appEvents, bool stateEvents,
                                       counted_ptr<ZANGuaranteedEngineMessageListener>& listener) {
    return forward([&](IZANEngineAdapter& adapter) {
        return adapter.unsubscribeDirect(ticket, connectionName, adminEvents, appEvents,
                                         stateEvents, listener);
    });
}

void ZANEngineProxy::unsubscribeDirect(UserTicket const& ticket, std::string const& connectionName,
                                       bool adminEvents, bool appEvents, bool stateEvents,
                                       counted_ptr<IZANEventListener>& listener) {
    return forward([&](IZANEngineAdapter& adapter) {
        return adapter.unsubscribeDirect(ticket, connectionName, adminEvents, appEvents,
                                         stateEvents, listener);
    });
}

void ZANEngineProxy::destroyDirectSubscriber(
    counted_ptr<ZANGuaranteedEngineMessageListener>& listener) {
    return forward(
        [&](IZANEngineAdapter& adapter) { return adapter.destroyDirectSubscriber(listener); });
}

void ZANEngineProxy::destroyDirectSubscriber(counted_ptr<IZANEventListener>& listener) {
    return forward(
        [&](IZANEngineAdapter& adapter) { return adapter.destroyDirectSubscriber(listener); });
}

long ZANEngineProxy::sendAdminMessage(UserTicket const& ticket, std::string const& connectionName,
                                      std::string const& message) {
    return forward([&](IZANEngineAdapter& adapter) {
        return adapter.sendAdminMessage(ticket, connectionName, message);
    });
}

long ZANEngineProxy::sendAdminMessage(UserTicket const& ticket, std::string const& connectionName,
                                      counted_ptr<ZANMessage> message) {
    return forward([&](IZANEngineAdapter& adapter) {
        return adapter.sendAdminMessage(ticket, connectionName, message);
    });
}

long ZANEngineProxy::resendMessages(UserTicket const& ticket, std::string const& connectionName,
                                    infra::Time const& from, infra::Time const& to,
                                    std::string const& filter) {
    return forward([&](IZANEngineAdapter& adapter) {
        return adapter.resendMessages(ticket, connectionName, from, to, filter);
    });
}

std::vector<counted_ptr<ZANMessage>>& ZANEngineProxy::retrieveMessagesByDateRange(
    UserTicket const& ticket, std::string const& connectionName,
    std::vector<counted_ptr<ZANMessage>>& messages, long stream, infra::Time const& from,
    infra::Time const& to, std::string const& filter, bool newestFirst) {
    return forward([&](IZANEngineAdapter& adapter) -> decltype(auto) {
        return adapter.retrieveMessagesByDateRange(ticket, connectionName, messages, stream, from,
                                                   to, filter, newestFirst);
    });
}

std::vector<counted_ptr<ZANMessage>>& ZANEngineProxy::retrieveMessagesByDateRange(
    UserTicket const& ticket, std::string const& connectionName,
    std::vector<counted_ptr<ZANMessage>>& messages, infra::Time const& from, infra::Time const& to,
    std::string const& filter, bool newestFirst) {
    return forward([&](IZANEngineAdapter& adapter) -> decltype(auto) {
        return adapter.retrieveMessagesByDateRange(ticket, connectionName, messages, from, to,
                                                   filter, newestFirst);
    });
}

std::vector<counted_ptr<ZANMessage>>& ZANEngineProxy::retrieveMessagesByIdRange(
    UserTicket const& ticket, std::string const& connectionName,
    std::vector<counted_ptr<ZANMessage>>& messages, long stream, long fromId, long toId,
    std::string const& filter, bool newestFirst) {
    return forward([&](IZANEngineAdapter& adapter) -> decltype(auto) {
        return adapter.retrieveMessagesByIdRange(ticket, connectionName, messages, stream, fromId,
                                                 toId, filter, newestFirst);
    });
}

std::vector<counted_ptr<ZANMessage>>&
ZANEngineProxy::retrieveMessagesByIdSet(UserTicket const& ticket, std::string const& connectionName,
                                        std::vector<counted_ptr<ZANMessage>>& messages, long stream,
                                        std::vector<int> const& ids, std::string const& filter,
                                        bool newestFirst) {
    return forward([&](IZANEngineAdapter& adapter) -> decltype(auto) {
        return adapter.retrieveMessagesByIdSet(ticket, connectionName, messages, stream, ids,
                                               filter, newestFirst);
    });
}

std::vector<counted_ptr<ZANMessage>>&
ZANEngineProxy::retrieveMessagesByQuery(UserTicket const& ticket, std::string const& connectionName,
                                        std::vector<counted_ptr<ZANMessage>>& messages, long stream,
                                        std::string const& where, std::string const& orderBy,
                                        bool newestFirst) {
    return forward([&](IZANEngineAdapter& adapter) -> decltype(auto) {
        return adapter.retrieveMessagesByQuery(ticket, connectionName, messages, stream, where,
                                               orderBy, newestFirst);
    });
}

std::vector<counted_ptr<ZANMessage>>& ZANEngineProxy::retrieveMessageChain(
    UserTicket const& ticket, std::string const& connectionName,
    std::vector<counted_ptr<ZANMessage>>& messages, std::vector<int> const& ids,
    std::vector<std::string> const& clientOrderIds, bool newestFirst) {
    return forward([&](IZANEngineAdapter& adapter) -> decltype(auto) {
        return adapter.retrieveMessageChain(ticket, connectionName, messages, ids, clientOrderIds,
                                            newestFirst);
    });
}

std::vector<counted_ptr<ZANMessage>>& ZANEngineProxy::retrieveMessagesForResend(
    UserTicket const& ticket, std::string const& connectionName,
    std::vector<counted_ptr<ZANMessage>>& messages, long fromSequence, long toSequence,
    std::string const& filter) {
    return forward([&](IZANEngineAdapter& adapter) -> decltype(auto) {
        return adapter.retrieveMessagesForResend(ticket, connectionName, messages, fromSequence,
                                                 toSequence, filter);
    });
}

std::vector<std::vector<std::string>>&
ZANEngineProxy::retrieveMessageLogData(UserTicket const& ticket, std::string const& connectionName,
                                       long stream, std::string const& columns,
                                       std::string const& where, std::string const& orderBy,
                                       std::vector<std::vector<std::string>>& table) {
    return forward([&](IZANEngineAdapter& adapter) -> decltype(auto) {
        return adapter.retrieveMessageLogData(ticket, connectionName, stream, columns, where,
                                              orderBy, table);
    });
}

long ZANEngineProxy::updateMessageLogData(UserTicket const& ticket,
                                          std::string const& connectionName, long stream,
                                          std::string const& assignments,
                                          std::string const& where) {
    return forward([&](IZANEngineAdapter& adapter) {
        return adapter.updateMessageLogData(ticket, connectionName, stream, assignments, where);
    });
}

long ZANEngineProxy::insertMessageLogData(UserTicket const& ticket,
                                          std::string const& connectionName,
                                          std::vector<counted_ptr<ZANMessage>> const& messages) {
    return forward([&](IZANEngineAdapter& adapter) {
        return adapter.insertMessageLogData(ticket, connectionName, messages);
    });
}

long ZANEngineProxy::deleteMessageLogData(UserTicket const& ticket,
                                          std::string const& connectionName, long stream,
                                          std::string const& where) {
    return forward([&](IZANEngineAdapter& adapter) {
        return adapter.deleteMessageLogData(ticket, connectionName, stream, where);
    });
}

counted_ptr<ZANConnectionState>
ZANEngineProxy::getConnectionState(UserTicket const& ticket,
                                   std::string const& connectionName) const {
    // Asking changes nothing in the proxy, but the adapter is reached as for every other call.
    return const_cast<ZANEngineProxy*>(this)->forward([&](IZANEngineAdapter& adapter) {
        return adapter.getConnectionState(ticket, connectionName);
    });
}

std::vector<int> ZANEngineProxy::getMessageIds(UserTicket const& ticket,
                                               std::string const& connectionName, long stream,
                                               bool newestFirst) {
    return forward([&](IZANEngineAdapter& adapter) {
        return adapter.getMessageIds(ticket, connectionName, stream, newestFirst);
    });
}

std::string ZANEngineProxy::getConnectionProperties(UserTicket const& ticket,
                                                    std::string const& connectionName) {
    return forward([&](IZANEngineAdapter& adapter) {
        return adapter.getConnectionProperties(ticket, connectionName);
    });
}

long ZANEngineProxy::sendMessage(UserTicket const& ticket, std::string const& connectionName,
                                 std::string const& message) {
    return forward([&](IZANEngineAdapter& adapter) {
        return adapter.sendMessage(ticket, connectionName, message);
    });
}

long ZANEngineProxy::sendMessage(UserTicket const& ticket, std::string const& connectionName,
                                 counted_ptr<ZANMessage> message) {
    return forward([&](IZANEngineAdapter& adapter) {
        return adapter.sendMessage(ticket, connectionName, message);
    });
}

void ZANEngineProxy::sendMultipleMessages(UserTicket const& ticket,
                                          std::string const& connectionName,
                                          std::vector<counted_ptr<ZANMessage>> const& messages) {
    return forward([&](IZANEngineAdapter& adapter) {
        return adapter.sendMultipleMessages(ticket, connectionName, messages);
    });
}

long ZANEngineProxy::postInternalMessage(UserTicket const& ticket,
                                         std::string const& connectionName,
                                         std::string const& message) {
    return forward([&](IZANEngineAdapter& adapter) {
        return adapter.postInternalMessage(ticket, connectionName, message);
    });
}

long ZANEngineProxy::postInternalMessage(UserTicket const& ticket,
                                         std::string const& connectionName,
                                         counted_ptr<ZANMessage> message) {
    return forward([&](IZANEngineAdapter& adapter) {
        return adapter.postInternalMessage(ticket, connectionName, message);
    });
}

void ZANEngineProxy::postMultipleInternalMessages(
    UserTicket const& ticket, std::string const& connectionName,
    std::vector<counted_ptr<ZANMessage>> const& messages) {
    return forward([&](IZANEngineAdapter& adapter) {
        return adapter.postMultipleInternalMessages(ticket, connectionName, messages);
    });
}

std::int64_t ZANEngineProxy::getMillisTime(UserTicket const& ticket) {
    return forward([&](IZANEngineAdapter& adapter) { return adapter.getMillisTime(ticket); });
}

ZANGMLAdapterFactory& ZANEngineProxy::getGMLAdapterFactory() {
    return forward([](IZANEngineAdapter& adapter) -> decltype(auto) {
        return adapter.getGMLAdapterFactory();
    });
}
