/// `ZANEngineProxy`: the one object through which an application reaches the engine.
///
/// Threads: the static operations are called by one thread, at the start and at the end, while no
/// other uses the proxy. All other public operations may be called from any thread, also from
/// inside a listener. Calls are handed to the adapter one at a time unless it declares itself safe
/// for concurrent calls. Events are delivered on the adapter's threads, without a lock of the
/// library's.
#ifndef ZANENGINE_ENGINE_ZANENGINEPROXY_H
#define ZANENGINE_ENGINE_ZANENGINEPROXY_H

#include "adapter/IZANEngine.h"
#include "adapter/IZANEngineAdapter.h"
#include "adapter/IZANEngineAdapterFactory.h"
#include "adapter/IZANEngineConfigProvider.h"
#include "adapter/IZANEventListener.h"
#include "events/ZANEvent.h"
#include "infra/Export.h"
#include "infra/IMutex.h"
#include "infra/Url.h"
#include "infra/counted_ptr.h"
#include "message/ZANIterator.h"

#include <cstdint>
#include <string>
#include <vector>

class ZANGMLAdapterFactory;

/// A singleton: `initialize` creates it around an adapter, `getInstance` hands it out,
/// `uninitialize` ends it. Every engine operation is carried out by the adapter; what an operation
/// does and throws is told by `IZANEngine`, and exceptions of the adapter pass untouched. The
/// proxy's own work is the registry of listeners.
///
/// Events of application and admin messages go to the listeners that were subscribed for exactly
/// that connection name, in the order of subscription, each through `processEvent`. A listener that
/// throws ends the delivery of that event: the later ones do not get it, and the exception reaches
/// the adapter. State events are not delivered to listeners subscribed here, though they may be
/// subscribed for; adapters deliver them to direct subscribers.
class ZAN_API ZANEngineProxy : public IZANEngine {
public:
    /// The listeners of one kind of event, by connection name. Guarded by the proxy.
    class ZAN_API ConnectionToListenersMap {
    public:
        ConnectionToListenersMap() = default;
        ConnectionToListenersMap(ConnectionToListenersMap const&) = default;
        ConnectionToListenersMap& operator=(ConnectionToListenersMap const&) = default;
        virtual ~ConnectionToListenersMap();

        /// Appends the listener to those of the name, unless it is among them already.
        virtual void addListener(std::string const& connectionName,
                                 counted_ptr<IZANEventListener> listener) = 0;

        /// Removes the listener from those of the name; an unknown one is ignored.
        virtual void removeListener(std::string const& connectionName,
                                    counted_ptr<IZANEventListener> listener) = 0;

        /// Walks over the listeners of exactly that name, in the order of subscription. The
        /// iterator is valid while the map is not changed.
        virtual counted_ptr<ZANIterator<counted_ptr<IZANEventListener>>>
        getListeners(std::string const& connectionName) = 0;
    };

    /// Starts with the adapter that `factory` creates for `provider`. Does nothing when the proxy
    /// is initialized already: to change the adapter call `uninitialize` first. Throws
    /// `ZANAdapterCreationException` when the factory gives none, `WrongConfigurationException`
    /// when there is no factory; what the factory and the adapter's start throw passes unchanged.
    /// After a failure there is no proxy.
    static void initialize(counted_ptr<IZANEngineConfigProvider> provider,
                           counted_ptr<IZANEngineAdapterFactory> factory);

    /// Starts with the adapter of the module that the URL's protocol names: for `demo` the function
    /// `create_demo_engineadapter` of the module `demoengineadapter`. Throws
    /// `WrongConfigurationException`, with every place that was searched, when there is none, when
    /// it was built for another library or when its function throws an `InfraException`; otherwise
    /// as above.
    static void initialize(Url const& url);

    /// Whether there is a proxy.
    static bool isInitialized();

    /// The proxy; valid until `uninitialize`. `ZANEngineException` when there is none.
    static ZANEngineProxy& getInstance();

    /// Stops and releases the adapter, then ends the proxy and all subscriptions. Does nothing when
    /// there is no proxy. What the adapter's stop throws passes unchanged and leaves the proxy.
    static void uninitialize();

    /// Copies share the adapter, the listeners and the mutexes, and each would delete the mutexes:
    /// not for use. `auto engine = ZANEngineProxy::getInstance()` makes one; the compiler warns.
    [[deprecated("take a reference: this copies the facade")]] ZANEngineProxy(
        ZANEngineProxy const&) = default;
    ZANEngineProxy& operator=(ZANEngineProxy const&) = default;
    ~ZANEngineProxy() override;

    void connect(UserTicket const& ticket, std::string const& connectionName,
                 counted_ptr<ZANFieldGroup> logonFields) override;
    void connect(UserTicket const& ticket, std::string const& connectionName) override;
    void disconnect(UserTicket const& ticket, std::string const& connectionName,
                    std::string const& reason) override;
    void resetConnection(UserTicket const& ticket, std::string const& connectionName) override;
    bool pingConnection(UserTicket const& ticket, std::string const& connectionName,
                        long timeoutMillis) override;
    bool isConnected(UserTicket const& ticket, std::string const& connectionName) override;
    void getConnectionNameList(UserTicket const& ticket,
                               std::vector<std::string>& connectionNames) override;
    void subscribeDirect(UserTicket const& ticket, std::string const& connectionName,
                         bool adminEvents, bool appEvents, bool stateEvents,
                         counted_ptr<ZANGuaranteedEngineMessageListener>& listener) override;
    void subscribeDirect(UserTicket const& ticket, std::string const& connectionName,
                         bool adminEvents, bool appEvents, bool stateEvents,
                         counted_ptr<IZANEventListener>& listener) override;
    void unsubscribeDirect(UserTicket const& ticket, std::string const& connectionName,
                           bool adminEvents, bool appEvents, bool stateEvents,
                           counted_ptr<ZANGuaranteedEngineMessageListener>& listener) override;
    void unsubscribeDirect(UserTicket const& ticket, std::string const& connectionName,
                           bool adminEvents, bool appEvents, bool stateEvents,
                           counted_ptr<IZANEventListener>& listener) override;
    void
    destroyDirectSubscriber(counted_ptr<ZANGuaranteedEngineMessageListener>& listener) override;
    void destroyDirectSubscriber(counted_ptr<IZANEventListener>& listener) override;
    void subscribe(UserTicket const& ticket, counted_ptr<IZANEventListener>& listener,
                   std::string const& connectionName, std::string const& eventType) override;
    void unsubscribe(UserTicket const& ticket, counted_ptr<IZANEventListener>& listener,
                     std::string const& connectionName, std::string const& eventType) override;
    long sendAdminMessage(UserTicket const& ticket, std::string const& connectionName,
                          std::string const& message) override;
    long sendAdminMessage(UserTicket const& ticket, std::string const& connectionName,
                          counted_ptr<ZANMessage> message) override;
    long resendMessages(UserTicket const& ticket, std::string const& connectionName,
                        infra::Time const& from, infra::Time const& to,
                        std::string const& filter) override;
    std::vector<counted_ptr<ZANMessage>>&
    retrieveMessagesByDateRange(UserTicket const& ticket, std::string const& connectionName,
                                std::vector<counted_ptr<ZANMessage>>& messages, long stream,
                                infra::Time const& from, infra::Time const& to,
                                std::string const& filter, bool newestFirst) override;
    std::vector<counted_ptr<ZANMessage>>&
    retrieveMessagesByDateRange(UserTicket const& ticket, std::string const& connectionName,
                                std::vector<counted_ptr<ZANMessage>>& messages,
                                infra::Time const& from, infra::Time const& to,
                                std::string const& filter, bool newestFirst) override;
    std::vector<counted_ptr<ZANMessage>>&
    retrieveMessagesByIdRange(UserTicket const& ticket, std::string const& connectionName,
                              std::vector<counted_ptr<ZANMessage>>& messages, long stream,
                              long fromId, long toId, std::string const& filter,
                              bool newestFirst) override;
    std::vector<counted_ptr<ZANMessage>>&
    retrieveMessagesByIdSet(UserTicket const& ticket, std::string const& connectionName,
                            std::vector<counted_ptr<ZANMessage>>& messages, long stream,
                            std::vector<int> const& ids, std::string const& filter,
                            bool newestFirst) override;
    std::vector<counted_ptr<ZANMessage>>&
    retrieveMessagesByQuery(UserTicket const& ticket, std::string const& connectionName,
                            std::vector<counted_ptr<ZANMessage>>& messages, long stream,
                            std::string const& where, std::string const& orderBy,
                            bool newestFirst) override;
    std::vector<counted_ptr<ZANMessage>>&
    retrieveMessageChain(UserTicket const& ticket, std::string const& connectionName,
                         std::vector<counted_ptr<ZANMessage>>& messages,
                         std::vector<int> const& ids,
                         std::vector<std::string> const& clientOrderIds, bool newestFirst) override;
    std::vector<counted_ptr<ZANMessage>>&
    retrieveMessagesForResend(UserTicket const& ticket, std::string const& connectionName,
                              std::vector<counted_ptr<ZANMessage>>& messages, long fromSequence,
                              long toSequence, std::string const& filter) override;
    std::vector<std::vector<std::string>>&
    retrieveMessageLogData(UserTicket const& ticket, std::string const& connectionName, long stream,
                           std::string const& columns, std::string const& where,
                           std::string const& orderBy,
                           std::vector<std::vector<std::string>>& table) override;
    long updateMessageLogData(UserTicket const& ticket, std::string const& connectionName,
                              long stream, std::string const& assignments,
                              std::string const& where) override;
    long insertMessageLogData(UserTicket const& ticket, std::string const& connectionName,
                              std::vector<counted_ptr<ZANMessage>> const& messages) override;
    long deleteMessageLogData(UserTicket const& ticket, std::string const& connectionName,
                              long stream, std::string const& where) override;
    counted_ptr<ZANConnectionState>
    getConnectionState(UserTicket const& ticket, std::string const& connectionName) const override;
    std::vector<int> getMessageIds(UserTicket const& ticket, std::string const& connectionName,
                                   long stream, bool newestFirst) override;
    std::string getConnectionProperties(UserTicket const& ticket,
                                        std::string const& connectionName) override;
    long sendMessage(UserTicket const& ticket, std::string const& connectionName,
                     std::string const& message) override;
    long sendMessage(UserTicket const& ticket, std::string const& connectionName,
                     counted_ptr<ZANMessage> message) override;
    void sendMultipleMessages(UserTicket const& ticket, std::string const& connectionName,
                              std::vector<counted_ptr<ZANMessage>> const& messages) override;
    long postInternalMessage(UserTicket const& ticket, std::string const& connectionName,
                             std::string const& message) override;
    long postInternalMessage(UserTicket const& ticket, std::string const& connectionName,
                             counted_ptr<ZANMessage> message) override;
    void
    postMultipleInternalMessages(UserTicket const& ticket, std::string const& connectionName,
                                 std::vector<counted_ptr<ZANMessage>> const& messages) override;
    std::int64_t getMillisTime(UserTicket const& ticket) override;

    /// The adapter's factory for the adapters of guaranteed listeners; owned by the adapter. Throws
    /// `ZANEngineException` when the adapter has been released, as inside `uninitialize`.
    virtual ZANGMLAdapterFactory& getGMLAdapterFactory();

protected:
    ZANEngineProxy();

    /// Delivers an event to its listeners on the calling thread. An event of an unknown class is
    /// reported on standard output.
    virtual void notifyListeners(counted_ptr<ZANEvent> event);

    virtual counted_ptr<ConnectionToListenersMap> createConnectionToAdminListenersMap();
    virtual counted_ptr<ConnectionToListenersMap> createConnectionToAppListenersMap();
    virtual counted_ptr<ConnectionToListenersMap> createConnectionToStateListenersMap();

    /// Installs the adapter, or none, and the mutex that fits it.
    virtual void setAdapter(counted_ptr<IZANEngineAdapter> adapter);

    /// The installed adapter. Throws `ZANEngineException` when there is none.
    virtual IZANEngineAdapter& getAdapter();

    /// Assigns the map of an event type to `map`; false, and `map` untouched, for an unknown type.
    bool selectListenersMap(counted_ptr<ConnectionToListenersMap>& map,
                            std::string const& eventType);

private:
    friend class IZANEngineAdapter;
    class Dispatch;

    struct EndOfProgram;

    static void start(counted_ptr<ZANEngineProxy> const& proxy,
                      counted_ptr<IZANEngineAdapter> const& adapter);
    static void publish(counted_ptr<ZANEngineProxy> proxy, counted_ptr<IZANEngineAdapter> adapter);
    static void end();
    counted_ptr<ZANEngineProxy> takeEnding();
    template <class Call>
    decltype(auto) forward(Call call);

    counted_ptr<ConnectionToListenersMap> AppListeners_;
    counted_ptr<ConnectionToListenersMap> AdminListeners_;
    counted_ptr<ConnectionToListenersMap> StateListeners_;
    IMutex* AdapterMutex_;
    IMutex* ListenersMutex_;
    counted_ptr<IZANEngineAdapter> Adapter_;
    bool adapterIsThreadSafe_;
    // Guarded by the listeners mutex: the proxy was told to end during a dispatch, and how many of
    // them are under way.
    bool endsWithDispatch_;
    int dispatches_;

    static counted_ptr<ZANEngineProxy> Instance_;
    static EndOfProgram const endOfProgram_;
};

#endif
