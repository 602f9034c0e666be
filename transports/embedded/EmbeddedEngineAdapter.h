/// The adapter that puts an engine into the application's own process.
///
/// Threads: every operation may be called from any thread, by listeners too; `initialize` and
/// `uninitialize` belong to the facade. A listener may end the engine that is calling it.
#ifndef ZANENGINE_TRANSPORTS_EMBEDDED_EMBEDDEDENGINEADAPTER_H
#define ZANENGINE_TRANSPORTS_EMBEDDED_EMBEDDEDENGINEADAPTER_H

#include "adapter/ZANEngineAdapterBase.h"
#include "server/engine/Engine.h"
#include "server/engine/GuaranteedAdapters.h"
#include "server/metrics/MetricsEndpoint.h"
#include "transports/embedded/DemoCounterparty.h"

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace zan::embedded {

/// Reads these properties of its provider: `engine.config`, the path of the session file, or `demo`
/// for an engine with a counterparty of its own; `engine.data`, the folder for the engine's data
/// (default: the session file's name with `.data` behind it); `engine.client`, the name under which
/// the marks of guaranteed listeners are kept (default: the user of the ticket that attaches one);
/// `engine.metrics`, the port or `<address>:<port>` where `/metrics` and `/healthz` are served
/// (default: nowhere); `engine.create`, `yes` (the default) or `no`: a data folder that is not
/// there is not made, the engine has nothing in store then and keeps nothing.
///
/// After `uninitialize` every operation throws `ZANEngineException`.
class EmbeddedEngineAdapter final : public ZANEngineAdapterBase {
public:
    using Ticket = UserTicket const&;
    using Name = std::string const&;
    using Listener = counted_ptr<IZANEventListener>&;
    using GuaranteedListener = counted_ptr<ZANGuaranteedEngineMessageListener>&;
    using Message = counted_ptr<ZANMessage>;
    using Messages = std::vector<counted_ptr<ZANMessage>>;
    using Table = std::vector<std::vector<std::string>>;

    using ZANEngineAdapterBase::ZANEngineAdapterBase;
    EmbeddedEngineAdapter(EmbeddedEngineAdapter const&) = delete;
    EmbeddedEngineAdapter& operator=(EmbeddedEngineAdapter const&) = delete;
    ~EmbeddedEngineAdapter() override;

    void initialize() override;
    void uninitialize() override;
    bool isThreadSafe() override;
    ZANGMLAdapterFactory& getGMLAdapterFactory() override;

    void connect(Ticket, Name connection, counted_ptr<ZANFieldGroup> logonFields) override;
    void connect(Ticket, Name connection) override;
    void disconnect(Ticket, Name connection, std::string const& reason) override;
    bool pingConnection(Ticket, Name connection, long timeoutMillis) override;
    bool isConnected(Ticket, Name connection) override;
    void getConnectionNameList(Ticket, std::vector<std::string>& names) override;
    counted_ptr<ZANConnectionState> getConnectionState(Ticket, Name connection) const override;
    std::string getConnectionProperties(Ticket, Name connection) override;
    std::int64_t getMillisTime(Ticket) override;

    void subscribeDirect(Ticket, Name connection, bool admin, bool app, bool state,
                         Listener listener) override;
    void unsubscribeDirect(Ticket, Name connection, bool admin, bool app, bool state,
                           Listener listener) override;
    void destroyDirectSubscriber(Listener listener) override;

    long sendAdminMessage(Ticket, Name connection, std::string const& message) override;
    long sendAdminMessage(Ticket, Name connection, Message message) override;
    long sendMessage(Ticket, Name connection, std::string const& message) override;
    long sendMessage(Ticket, Name connection, Message message) override;

    void subscribeDirect(Ticket, Name connection, bool admin, bool app, bool state,
                         GuaranteedListener listener) override;
    void unsubscribeDirect(Ticket, Name connection, bool admin, bool app, bool state,
                           GuaranteedListener listener) override;
    void destroyDirectSubscriber(GuaranteedListener listener) override;

    void resetConnection(Ticket, Name) override;
    long resendMessages(Ticket, Name, infra::Time const&, infra::Time const&,
                        std::string const&) override;
    Messages& retrieveMessagesByDateRange(Ticket, Name, Messages&, long, infra::Time const&,
                                          infra::Time const&, std::string const&, bool) override;
    Messages& retrieveMessagesByDateRange(Ticket, Name, Messages&, infra::Time const&,
                                          infra::Time const&, std::string const&, bool) override;
    Messages& retrieveMessagesByIdRange(Ticket, Name, Messages&, long, long, long,
                                        std::string const&, bool) override;
    Messages& retrieveMessagesByIdSet(Ticket, Name, Messages&, long, std::vector<int> const&,
                                      std::string const&, bool) override;
    Messages& retrieveMessagesByQuery(Ticket, Name, Messages&, long, std::string const&,
                                      std::string const&, bool) override;
    Messages& retrieveMessageChain(Ticket, Name, Messages&, std::vector<int> const&,
                                   std::vector<std::string> const&, bool) override;
    Messages& retrieveMessagesForResend(Ticket, Name, Messages&, long, long,
                                        std::string const&) override;
    Table& retrieveMessageLogData(Ticket, Name, long, std::string const&, std::string const&,
                                  std::string const&, Table&) override;
    long updateMessageLogData(Ticket, Name, long, std::string const&, std::string const&) override;
    long insertMessageLogData(Ticket, Name, Messages const&) override;
    long deleteMessageLogData(Ticket, Name, long, std::string const&) override;
    std::vector<int> getMessageIds(Ticket, Name, long, bool) override;
    void sendMultipleMessages(Ticket, Name, Messages const&) override;
    long postInternalMessage(Ticket, Name, std::string const&) override;
    long postInternalMessage(Ticket, Name, Message) override;
    void postMultipleInternalMessages(Ticket, Name, Messages const&) override;

private:
    std::shared_ptr<server::Engine> start(std::string const& config);
    /// A property that is yes, also when it is not there, or no.
    bool isAllowed(std::string const& property) const;
    std::string dataFolder(std::string const& config);
    void forget();
    std::unique_ptr<server::MetricsEndpoint> openMetrics() const;
    void report(counted_ptr<ZANEvent> const& event);
    std::shared_ptr<server::Engine> engine() const;

    /// Holds the engine while it is used, whoever stops it meanwhile.
    struct ConnectionInUse {
        std::shared_ptr<server::Engine> engine;
        server::Connection* connection;
        server::Connection* operator->() const { return connection; }
    };
    ConnectionInUse at(Name connection) const;

    server::GuaranteedAdapters guaranteedListeners_;
    std::unique_ptr<DemoCounterparty> demo_;
    std::optional<TemporaryFolder> nothing_; // in place of a data folder that must not be made
    mutable std::mutex engineMutex_;
    std::shared_ptr<server::Engine> engine_;
    std::unique_ptr<server::MetricsEndpoint> metrics_;
    bool isRegistered_ = false;
};

} // namespace zan::embedded

#endif
