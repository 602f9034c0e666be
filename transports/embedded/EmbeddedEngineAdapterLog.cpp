// The operations on the message log: retrieval, edits, posting, resending, guaranteed listeners.
#include "errors/ZANEngineException.h"
#include "server/engine/GuaranteedAdapter.h"
#include "transports/embedded/EmbeddedEngineAdapter.h"

#include <limits>
#include <utility>

namespace zan::embedded {

using server::EventKinds;
using server::GuaranteedAdapter;
using server::LogQuery;

namespace {

// The marks of a listener that nobody gave a name.
constexpr char const* nameOfNobody = "default";

// The listener's adapter, which has to be one of ours.
GuaranteedAdapter& adapterOf(ZANGuaranteedEngineMessageListener& listener) {
    auto* const adapter = dynamic_cast<GuaranteedAdapter*>(&listener.getAdapter());
    if (!adapter) {
        throw ZANEngineException("the guaranteed listener was made with another engine's adapter; "
                                 "one that is made now would be right");
    }
    return *adapter;
}

// A stream that does not fit is none that exists; the history tells so.
LogQuery queryOf(long stream, std::string const& where, bool newestFirst) {
    LogQuery query;
    bool const fits = stream == static_cast<int>(stream);
    query.stream = fits ? static_cast<int>(stream) : std::numeric_limits<int>::max();
    query.where = where;
    query.newestFirst = newestFirst;
    return query;
}

} // namespace

void EmbeddedEngineAdapter::subscribeDirect(Ticket ticket, Name connection, bool admin, bool app,
                                            bool state, GuaranteedListener listener) {
    ConnectionInUse const to = at(connection);
    if (listener) {
        GuaranteedAdapter& adapter = adapterOf(*listener);
        adapter.attachTo(to.engine, ticket.getUser().empty() ? nameOfNobody : ticket.getUser());
        to->subscribers().add(listener, adapter.filter(), adapter.getSubscriberName(),
                              EventKinds{admin, app, state});
    }
}

void EmbeddedEngineAdapter::unsubscribeDirect(Ticket, Name connection, bool admin, bool app,
                                              bool state, GuaranteedListener listener) {
    ConnectionInUse const from = at(connection);
    from->subscribers().remove(listener, EventKinds{admin, app, state},
                               from.engine->patienceWithListener());
}

void EmbeddedEngineAdapter::destroyDirectSubscriber(GuaranteedListener listener) {
    std::shared_ptr<server::Engine> const running = engine();
    for (auto const& connection : running->connections()) {
        connection->subscribers().remove(listener, EventKinds{true, true, true},
                                         running->patienceWithListener());
    }
}

void EmbeddedEngineAdapter::resetConnection(Ticket ticket, Name connection) {
    at(connection)->resetNumbers(ticket.getUser());
}

long EmbeddedEngineAdapter::resendMessages(Ticket, Name connection, infra::Time const& from,
                                           infra::Time const& to, std::string const& filter) {
    return at(connection)->resend(from, to, filter);
}

EmbeddedEngineAdapter::Messages& EmbeddedEngineAdapter::retrieveMessagesByDateRange(
    Ticket, Name connection, Messages& messages, long stream, infra::Time const& from,
    infra::Time const& to, std::string const& filter, bool newestFirst) {
    LogQuery query = queryOf(stream, filter, newestFirst);
    query.millis = {from.getMillis(), to.getMillis()};
    at(connection)->history().read(query, messages);
    return messages;
}

EmbeddedEngineAdapter::Messages& EmbeddedEngineAdapter::retrieveMessagesByDateRange(
    Ticket ticket, Name connection, Messages& messages, infra::Time const& from,
    infra::Time const& to, std::string const& filter, bool newestFirst) {
    return retrieveMessagesByDateRange(ticket, connection, messages, -1, from, to, filter,
                                       newestFirst);
}

EmbeddedEngineAdapter::Messages&
EmbeddedEngineAdapter::retrieveMessagesByIdRange(Ticket, Name connection, Messages& messages,
                                                 long stream, long first, long last,
                                                 std::string const& filter, bool newestFirst) {
    LogQuery query = queryOf(stream, filter, newestFirst);
    query.ids = {first, last};
    at(connection)->history().read(query, messages);
    return messages;
}

EmbeddedEngineAdapter::Messages&
EmbeddedEngineAdapter::retrieveMessagesByIdSet(Ticket, Name connection, Messages& messages,
                                               long stream, std::vector<int> const& ids,
                                               std::string const& filter, bool newestFirst) {
    LogQuery query = queryOf(stream, filter, newestFirst);
    query.idSet = ids;
    at(connection)->history().read(query, messages);
    return messages;
}

EmbeddedEngineAdapter::Messages&
EmbeddedEngineAdapter::retrieveMessagesByQuery(Ticket, Name connection, Messages& messages,
                                               long stream, std::string const& where,
                                               std::string const& orderBy, bool newestFirst) {
    LogQuery query = queryOf(stream, where, newestFirst);
    query.orderBy = orderBy;
    at(connection)->history().read(query, messages);
    return messages;
}

EmbeddedEngineAdapter::Messages& EmbeddedEngineAdapter::retrieveMessageChain(
    Ticket, Name connection, Messages& messages, std::vector<int> const& ids,
    std::vector<std::string> const& clientOrderIds, bool newestFirst) {
    at(connection)->history().readChain(ids, clientOrderIds, newestFirst, messages);
    return messages;
}

EmbeddedEngineAdapter::Messages&
EmbeddedEngineAdapter::retrieveMessagesForResend(Ticket, Name connection, Messages& messages,
                                                 long first, long last, std::string const& filter) {
    at(connection)->history().readForResend(first, last, filter, messages);
    return messages;
}

EmbeddedEngineAdapter::Table&
EmbeddedEngineAdapter::retrieveMessageLogData(Ticket, Name connection, long stream,
                                              std::string const& columns, std::string const& where,
                                              std::string const& orderBy, Table& table) {
    at(connection)->history().readTable(stream, columns, where, orderBy, table);
    return table;
}

long EmbeddedEngineAdapter::updateMessageLogData(Ticket ticket, Name connection, long stream,
                                                 std::string const& assignments,
                                                 std::string const& where) {
    return at(connection)->history().update(stream, assignments, where, ticket.getUser());
}

long EmbeddedEngineAdapter::insertMessageLogData(Ticket ticket, Name connection,
                                                 Messages const& messages) {
    return at(connection)->history().insert(messages, ticket.getUser());
}

long EmbeddedEngineAdapter::deleteMessageLogData(Ticket ticket, Name connection, long stream,
                                                 std::string const& where) {
    return at(connection)->history().remove(stream, where, ticket.getUser());
}

std::vector<int> EmbeddedEngineAdapter::getMessageIds(Ticket, Name connection, long stream,
                                                      bool newestFirst) {
    return at(connection)->history().ids(stream, newestFirst);
}

void EmbeddedEngineAdapter::sendMultipleMessages(Ticket, Name connection,
                                                 Messages const& messages) {
    at(connection)->send(messages);
}

long EmbeddedEngineAdapter::postInternalMessage(Ticket, Name connection,
                                                std::string const& message) {
    return at(connection)->post(message);
}

long EmbeddedEngineAdapter::postInternalMessage(Ticket, Name connection, Message message) {
    return at(connection)->post(message);
}

void EmbeddedEngineAdapter::postMultipleInternalMessages(Ticket, Name connection,
                                                         Messages const& messages) {
    at(connection)->post(messages);
}

} // namespace zan::embedded
