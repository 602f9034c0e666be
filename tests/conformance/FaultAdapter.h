/// `FaultAdapter`: forwards to another adapter and does it harm on the way, by a `FaultScript`.
///
/// A connection `X` of the inner adapter is shown as `fault.X`: the inner one reports its events
/// straight to the facade under its own names, and this one reports them again, as the script has
/// it, under the names that it shows.
///
/// State events come unharmed. Guaranteed listeners belong to the inner adapter: they get its
/// events unharmed, under the inner names, and set their marks under these.
///
/// Threads: as the inner adapter's.
#ifndef ZANENGINE_CONFORMANCE_FAULTADAPTER_H
#define ZANENGINE_CONFORMANCE_FAULTADAPTER_H

#include "adapter/ZANEngineAdapterBase.h"
#include "conformance/FaultScript.h"

#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace zan::conformance {

/// How often each operation was called, and which calls are done. Threads: any.
class CallCounts {
public:
    /// The number of this call.
    int begin(std::string const& operation);
    void end(std::string const& operation, int number);
    /// Returns when that call is done, after a second in any case.
    void waitFor(std::string const& operation, int number);

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::map<std::string, int> begun_;
    std::map<std::string, int> highestDone_;
};

class FaultAdapter final : public ZANEngineAdapterBase {
public:
    using Ticket = UserTicket const&;
    using Name = std::string const&;
    using Text = std::string const&;
    using Message = counted_ptr<ZANMessage>;
    using Messages = std::vector<Message>;
    using Table = std::vector<std::vector<std::string>>;
    using Listener = counted_ptr<IZANEventListener>&;
    using GuaranteedListener = counted_ptr<ZANGuaranteedEngineMessageListener>&;

    static std::string const& prefix();

    /// `inner` is an adapter that is not started; it is started and stopped by this one.
    FaultAdapter(counted_ptr<IZANEngineConfigProvider> provider,
                 counted_ptr<IZANEngineAdapter> inner, FaultScript script);
    FaultAdapter(FaultAdapter const&) = delete;
    FaultAdapter& operator=(FaultAdapter const&) = delete;
    ~FaultAdapter() override;

    void initialize() override;
    void uninitialize() override;
    bool isThreadSafe() override;
    ZANGMLAdapterFactory& getGMLAdapterFactory() override;

    void connect(Ticket ticket, Name name, counted_ptr<ZANFieldGroup> logonFields) override;
    void connect(Ticket ticket, Name name) override;
    void disconnect(Ticket ticket, Name name, Text reason) override;
    void resetConnection(Ticket ticket, Name name) override;
    bool pingConnection(Ticket ticket, Name name, long timeoutMillis) override;
    bool isConnected(Ticket ticket, Name name) override;
    void getConnectionNameList(Ticket ticket, std::vector<std::string>& names) override;
    void subscribeDirect(Ticket ticket, Name name, bool admin, bool app, bool state,
                         GuaranteedListener listener) override;
    void subscribeDirect(Ticket ticket, Name name, bool admin, bool app, bool state,
                         Listener listener) override;
    void unsubscribeDirect(Ticket ticket, Name name, bool admin, bool app, bool state,
                           GuaranteedListener listener) override;
    void unsubscribeDirect(Ticket ticket, Name name, bool admin, bool app, bool state,
                           Listener listener) override;
    void destroyDirectSubscriber(GuaranteedListener listener) override;
    void destroyDirectSubscriber(Listener listener) override;
    long sendAdminMessage(Ticket ticket, Name name, Text message) override;
    long sendAdminMessage(Ticket ticket, Name name, Message message) override;
    long resendMessages(Ticket ticket, Name name, infra::Time const& from, infra::Time const& to,
                        Text filter) override;
    Messages& retrieveMessagesByDateRange(Ticket ticket, Name name, Messages& out, long stream,
                                          infra::Time const& from, infra::Time const& to,
                                          Text filter, bool newestFirst) override;
    Messages& retrieveMessagesByDateRange(Ticket ticket, Name name, Messages& out,
                                          infra::Time const& from, infra::Time const& to,
                                          Text filter, bool newestFirst) override;
    Messages& retrieveMessagesByIdRange(Ticket ticket, Name name, Messages& out, long stream,
                                        long fromId, long toId, Text filter,
                                        bool newestFirst) override;
    Messages& retrieveMessagesByIdSet(Ticket ticket, Name name, Messages& out, long stream,
                                      std::vector<int> const& ids, Text filter,
                                      bool newestFirst) override;
    Messages& retrieveMessagesByQuery(Ticket ticket, Name name, Messages& out, long stream,
                                      Text where, Text orderBy, bool newestFirst) override;
    Messages& retrieveMessageChain(Ticket ticket, Name name, Messages& out,
                                   std::vector<int> const& ids,
                                   std::vector<std::string> const& clientOrderIds,
                                   bool newestFirst) override;
    Messages& retrieveMessagesForResend(Ticket ticket, Name name, Messages& out, long fromSequence,
                                        long toSequence, Text filter) override;
    Table& retrieveMessageLogData(Ticket ticket, Name name, long stream, Text columns, Text where,
                                  Text orderBy, Table& out) override;
    long updateMessageLogData(Ticket ticket, Name name, long stream, Text assignments,
                              Text where) override;
    long insertMessageLogData(Ticket ticket, Name name, Messages const& messages) override;
    long deleteMessageLogData(Ticket ticket, Name name, long stream, Text where) override;
    counted_ptr<ZANConnectionState> getConnectionState(Ticket ticket, Name name) const override;
    std::vector<int> getMessageIds(Ticket ticket, Name name, long stream,
                                   bool newestFirst) override;
    std::string getConnectionProperties(Ticket ticket, Name name) override;
    long sendMessage(Ticket ticket, Name name, Text message) override;
    long sendMessage(Ticket ticket, Name name, Message message) override;
    void sendMultipleMessages(Ticket ticket, Name name, Messages const& messages) override;
    long postInternalMessage(Ticket ticket, Name name, Text message) override;
    long postInternalMessage(Ticket ticket, Name name, Message message) override;
    void postMultipleInternalMessages(Ticket ticket, Name name, Messages const& messages) override;
    std::int64_t getMillisTime(Ticket ticket) override;

private:
    class Turn;

    bool begin(std::string const& operation, int number) const;
    template <class Call>
    auto forward(char const* operation, Call call) const;
    template <class Call>
    auto pass(char const* operation, Call call);
    template <class Answer, class Call>
    Answer& passInto(Answer& out, char const* operation, Call call);

    void listenToTheInnerOne();
    bool hasRelay(Listener listener);
    counted_ptr<IZANEventListener>& relayOf(Listener listener);
    void retireRelayOf(Listener listener);

    counted_ptr<IZANEngineAdapter> inner_;
    std::shared_ptr<FaultScript const> script_;
    CallCounts mutable counts_;

    std::mutex relaysMutex_;
    bool isListening_ = false;
    std::map<IZANEventListener*, counted_ptr<IZANEventListener>> relays_;
    // Counts are plain: the last reference to a relay goes when no event is on its way any more.
    std::vector<counted_ptr<IZANEventListener>> kept_;
};

} // namespace zan::conformance

#endif
