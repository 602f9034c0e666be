/// `IZANEngine`: every operation of a messaging engine. The facade offers it to applications and
/// each adapter implements it for the facade, operation for operation.
///
/// Threads: the facade may be called from any thread. It calls an adapter from one thread at a time
/// unless the adapter declares itself safe for concurrent calls.
///
/// The order of the virtual operations is part of the contract, because adapters are built apart
/// from the library: none may be moved, inserted or removed.
///
/// Said once for all operations:
/// - The ticket is the caller's credential. Only the adapter looks at it.
/// - A connection is named exactly, without wildcards.
/// - A failure is thrown as a member of the `ZANEngineException` family, or as the adapter's own
///   exception, and passes through the facade untouched. A connection name that the engine does not
///   know is a `ZANConnectionUnknownException`.
/// - `stream` is one of `ZANGuaranteedEngineMessageListener::MessageTypeIds` (0 to 4), or -1 for
///   all of them; message ids are connection message ids. Times are UTC; both ends of a range are
///   included.
/// - The caller owns every vector. Retrieving operations append to it and return a reference to it.
/// - What numbers, flags, filters and expressions select is the adapter's to define. What is told
///   here holds for the adapters that come with the library; other adapters tell their own.
#ifndef ZANENGINE_ADAPTER_IZANENGINE_H
#define ZANENGINE_ADAPTER_IZANENGINE_H

#include "adapter/IZANEventListener.h"
#include "events/ZANConnectionState.h"
#include "infra/Export.h"
#include "infra/Time.h"
#include "infra/UserTicket.h"
#include "infra/counted_ptr.h"
#include "message/ZANFieldGroup.h"
#include "message/ZANMessage.h"

#include <cstdint>
#include <string>
#include <vector>

class ZANGuaranteedEngineMessageListener;

class ZAN_API IZANEngine {
public:
    IZANEngine() = default;
    IZANEngine(IZANEngine const&) = default;
    IZANEngine& operator=(IZANEngine const&) = default;
    virtual ~IZANEngine();

    /// Opens the link and logs on; returns when the session is logged on. `logonFields` are added
    /// to the Logon message. Nothing happens when the connection is logged on already. Throws
    /// `ZANCannotConnectException`, or `ZANInvalidLogonException` when the counterparty refused.
    virtual void connect(UserTicket const& ticket, std::string const& connectionName,
                         counted_ptr<ZANFieldGroup> logonFields) = 0;
    virtual void connect(UserTicket const& ticket, std::string const& connectionName) = 0;

    /// Logs out, with `reason` as the text for the counterparty, and closes the link.
    virtual void disconnect(UserTicket const& ticket, std::string const& connectionName,
                            std::string const& reason) = 0;

    /// Sets the sequence numbers of both directions back to 1.
    virtual void resetConnection(UserTicket const& ticket, std::string const& connectionName) = 0;

    /// True when the counterparty answered a test request within `timeoutMillis` milliseconds.
    virtual bool pingConnection(UserTicket const& ticket, std::string const& connectionName,
                                long timeoutMillis) = 0;

    /// True while the session is logged on.
    virtual bool isConnected(UserTicket const& ticket, std::string const& connectionName) = 0;

    /// Appends the names of all connections, in the order of the engine's configuration.
    virtual void getConnectionNameList(UserTicket const& ticket,
                                       std::vector<std::string>& connectionNames) = 0;

    /// Attaches a listener straight to the adapter, past the facade's own registry. The flags
    /// choose the kinds of events: admin messages, application messages, state events. Events come
    /// on the adapter's threads, for one connection in the order of its log. The adapter keeps a
    /// reference.
    virtual void subscribeDirect(UserTicket const& ticket, std::string const& connectionName,
                                 bool adminEvents, bool appEvents, bool stateEvents,
                                 counted_ptr<ZANGuaranteedEngineMessageListener>& listener) = 0;
    virtual void subscribeDirect(UserTicket const& ticket, std::string const& connectionName,
                                 bool adminEvents, bool appEvents, bool stateEvents,
                                 counted_ptr<IZANEventListener>& listener) = 0;

    /// Takes the flagged kinds of events of one connection away from a direct listener.
    virtual void unsubscribeDirect(UserTicket const& ticket, std::string const& connectionName,
                                   bool adminEvents, bool appEvents, bool stateEvents,
                                   counted_ptr<ZANGuaranteedEngineMessageListener>& listener) = 0;
    virtual void unsubscribeDirect(UserTicket const& ticket, std::string const& connectionName,
                                   bool adminEvents, bool appEvents, bool stateEvents,
                                   counted_ptr<IZANEventListener>& listener) = 0;

    /// Takes a direct listener off every connection; the adapter lets go of its references.
    virtual void
    destroyDirectSubscriber(counted_ptr<ZANGuaranteedEngineMessageListener>& listener) = 0;
    virtual void destroyDirectSubscriber(counted_ptr<IZANEventListener>& listener) = 0;

    /// Registers a listener for the events of one connection and one event type, a name of
    /// `ZANEngineDefs`; `unsubscribe` removes it. Both are the facade's own work and never reach an
    /// adapter. Any other type: `ZANInvalidConfigPropertiesException`.
    virtual void subscribe(UserTicket const& ticket, counted_ptr<IZANEventListener>& listener,
                           std::string const& connectionName, std::string const& eventType) = 0;
    virtual void unsubscribe(UserTicket const& ticket, counted_ptr<IZANEventListener>& listener,
                             std::string const& connectionName, std::string const& eventType) = 0;

    /// Sends a session-level message, given as text or as a model. Returns its message id once it
    /// is stored. Throws `ZANNotConnectedException` (nothing is stored then) or
    /// `ZANInvalidMessageException`. The text is `tag=value`, separated by SOH or `|`.
    virtual long sendAdminMessage(UserTicket const& ticket, std::string const& connectionName,
                                  std::string const& message) = 0;
    virtual long sendAdminMessage(UserTicket const& ticket, std::string const& connectionName,
                                  counted_ptr<ZANMessage> message) = 0;

    /// Sends again the application messages that were sent between the two times and match `filter`
    /// (empty: all). Returns how many.
    virtual long resendMessages(UserTicket const& ticket, std::string const& connectionName,
                                infra::Time const& from, infra::Time const& to,
                                std::string const& filter) = 0;

    /// Appends the stored messages of a time range that match `filter` (empty: all), oldest first
    /// unless `newestFirst`. Without a stream: of all streams.
    virtual std::vector<counted_ptr<ZANMessage>>&
    retrieveMessagesByDateRange(UserTicket const& ticket, std::string const& connectionName,
                                std::vector<counted_ptr<ZANMessage>>& messages, long stream,
                                infra::Time const& from, infra::Time const& to,
                                std::string const& filter, bool newestFirst) = 0;
    virtual std::vector<counted_ptr<ZANMessage>>&
    retrieveMessagesByDateRange(UserTicket const& ticket, std::string const& connectionName,
                                std::vector<counted_ptr<ZANMessage>>& messages,
                                infra::Time const& from, infra::Time const& to,
                                std::string const& filter, bool newestFirst) = 0;

    /// The same for the message ids from `fromId` to `toId`.
    virtual std::vector<counted_ptr<ZANMessage>>&
    retrieveMessagesByIdRange(UserTicket const& ticket, std::string const& connectionName,
                              std::vector<counted_ptr<ZANMessage>>& messages, long stream,
                              long fromId, long toId, std::string const& filter,
                              bool newestFirst) = 0;

    /// The same for a set of message ids; ids that are not stored are left out.
    virtual std::vector<counted_ptr<ZANMessage>>&
    retrieveMessagesByIdSet(UserTicket const& ticket, std::string const& connectionName,
                            std::vector<counted_ptr<ZANMessage>>& messages, long stream,
                            std::vector<int> const& ids, std::string const& filter,
                            bool newestFirst) = 0;

    /// The same for an expression over the message log, sorted by `orderBy` (empty: by id). An
    /// expression that cannot be understood: `ZANInvalidMessageException`.
    virtual std::vector<counted_ptr<ZANMessage>>&
    retrieveMessagesByQuery(UserTicket const& ticket, std::string const& connectionName,
                            std::vector<counted_ptr<ZANMessage>>& messages, long stream,
                            std::string const& where, std::string const& orderBy,
                            bool newestFirst) = 0;

    /// Appends every message of the orders that these message ids or client order ids belong to.
    virtual std::vector<counted_ptr<ZANMessage>>&
    retrieveMessageChain(UserTicket const& ticket, std::string const& connectionName,
                         std::vector<counted_ptr<ZANMessage>>& messages,
                         std::vector<int> const& ids,
                         std::vector<std::string> const& clientOrderIds, bool newestFirst) = 0;

    /// Appends the application messages that were sent under a range of sequence numbers, as they
    /// would be sent again. `toSequence` 0 means: to the newest.
    virtual std::vector<counted_ptr<ZANMessage>>&
    retrieveMessagesForResend(UserTicket const& ticket, std::string const& connectionName,
                              std::vector<counted_ptr<ZANMessage>>& messages, long fromSequence,
                              long toSequence, std::string const& filter) = 0;

    /// Appends the message log as a table of text: a row of column names, then one row a message.
    /// `columns` are separated by commas; empty means all. Returns `table`.
    virtual std::vector<std::vector<std::string>>&
    retrieveMessageLogData(UserTicket const& ticket, std::string const& connectionName, long stream,
                           std::string const& columns, std::string const& where,
                           std::string const& orderBy,
                           std::vector<std::vector<std::string>>& table) = 0;

    /// Edit the message log; each returns how many rows it changed, added or deleted.
    virtual long updateMessageLogData(UserTicket const& ticket, std::string const& connectionName,
                                      long stream, std::string const& assignments,
                                      std::string const& where) = 0;
    virtual long insertMessageLogData(UserTicket const& ticket, std::string const& connectionName,
                                      std::vector<counted_ptr<ZANMessage>> const& messages) = 0;
    virtual long deleteMessageLogData(UserTicket const& ticket, std::string const& connectionName,
                                      long stream, std::string const& where) = 0;

    /// The state of a connection as it is now, in a record of the caller's own.
    virtual counted_ptr<ZANConnectionState>
    getConnectionState(UserTicket const& ticket, std::string const& connectionName) const = 0;

    /// The message ids that are stored in a stream, oldest first unless `newestFirst`.
    virtual std::vector<int> getMessageIds(UserTicket const& ticket,
                                           std::string const& connectionName, long stream,
                                           bool newestFirst) = 0;

    /// The effective settings of a connection as text, one `key=value` a line, secrets masked.
    virtual std::string getConnectionProperties(UserTicket const& ticket,
                                                std::string const& connectionName) = 0;

    /// Sends an application message; otherwise like `sendAdminMessage`.
    virtual long sendMessage(UserTicket const& ticket, std::string const& connectionName,
                             std::string const& message) = 0;
    virtual long sendMessage(UserTicket const& ticket, std::string const& connectionName,
                             counted_ptr<ZANMessage> message) = 0;

    /// Sends application messages in order, all or none: one bad message refuses the whole batch.
    virtual void sendMultipleMessages(UserTicket const& ticket, std::string const& connectionName,
                                      std::vector<counted_ptr<ZANMessage>> const& messages) = 0;

    /// Stores a message and delivers it to listeners, but never to the counterparty. Returns its
    /// message id.
    virtual long postInternalMessage(UserTicket const& ticket, std::string const& connectionName,
                                     std::string const& message) = 0;
    virtual long postInternalMessage(UserTicket const& ticket, std::string const& connectionName,
                                     counted_ptr<ZANMessage> message) = 0;
    virtual void
    postMultipleInternalMessages(UserTicket const& ticket, std::string const& connectionName,
                                 std::vector<counted_ptr<ZANMessage>> const& messages) = 0;

    /// The engine's clock, in milliseconds since 1970-01-01 00:00:00 UTC.
    virtual std::int64_t getMillisTime(UserTicket const& ticket) = 0;
};

#endif
