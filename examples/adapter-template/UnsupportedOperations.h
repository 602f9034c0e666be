/// The ground that an adapter starts from: every engine operation throws a `ZANEngineException`
/// that names the operation, until the adapter overrides it.
///
/// Threads: no state, any thread.
#ifndef TEMPLATE_ADAPTER_UNSUPPORTEDOPERATIONS_H
#define TEMPLATE_ADAPTER_UNSUPPORTEDOPERATIONS_H

#include "adapter/ZANEngineAdapterBase.h"

class UnsupportedOperations : public ZANEngineAdapterBase {
public:
    using Name = std::string;
    using Text = std::string;
    using Messages = std::vector<counted_ptr<ZANMessage>>;
    using Table = std::vector<std::vector<std::string>>;
    using GuaranteedListener = counted_ptr<ZANGuaranteedEngineMessageListener>;
    using Listener = counted_ptr<IZANEventListener>;
    using ZANEngineAdapterBase::ZANEngineAdapterBase;

    void connect(UserTicket const&, Name const&, counted_ptr<ZANFieldGroup>) override;
    void connect(UserTicket const&, Name const&) override;
    void disconnect(UserTicket const&, Name const&, Text const&) override;
    void resetConnection(UserTicket const&, Name const&) override;
    bool pingConnection(UserTicket const&, Name const&, long) override;
    bool isConnected(UserTicket const&, Name const&) override;
    void getConnectionNameList(UserTicket const&, std::vector<std::string>&) override;
    void subscribeDirect(UserTicket const&, Name const&, bool, bool, bool,
                         GuaranteedListener&) override;
    void subscribeDirect(UserTicket const&, Name const&, bool, bool, bool, Listener&) override;
    void unsubscribeDirect(UserTicket const&, Name const&, bool, bool, bool,
                           GuaranteedListener&) override;
    void unsubscribeDirect(UserTicket const&, Name const&, bool, bool, bool, Listener&) override;
    void destroyDirectSubscriber(GuaranteedListener&) override;
    void destroyDirectSubscriber(Listener&) override;
    long sendAdminMessage(UserTicket const&, Name const&, Text const&) override;
    long sendAdminMessage(UserTicket const&, Name const&, counted_ptr<ZANMessage>) override;
    long resendMessages(UserTicket const&, Name const&, infra::Time const&, infra::Time const&,
                        Text const&) override;
    Messages& retrieveMessagesByDateRange(UserTicket const&, Name const&, Messages&, long,
                                          infra::Time const&, infra::Time const&, Text const&,
                                          bool) override;
    Messages& retrieveMessagesByDateRange(UserTicket const&, Name const&, Messages&,
                                          infra::Time const&, infra::Time const&, Text const&,
                                          bool) override;
    Messages& retrieveMessagesByIdRange(UserTicket const&, Name const&, Messages&, long, long, long,
                                        Text const&, bool) override;
    Messages& retrieveMessagesByIdSet(UserTicket const&, Name const&, Messages&, long,
                                      std::vector<int> const&, Text const&, bool) override;
    Messages& retrieveMessagesByQuery(UserTicket const&, Name const&, Messages&, long, Text const&,
                                      Text const&, bool) override;
    Messages& retrieveMessageChain(UserTicket const&, Name const&, Messages&,
                                   std::vector<int> const&, std::vector<std::string> const&,
                                   bool) override;
    Messages& retrieveMessagesForResend(UserTicket const&, Name const&, Messages&, long, long,
                                        Text const&) override;
    Table& retrieveMessageLogData(UserTicket const&, Name const&, long, Text const&, Text const&,
                                  Text const&, Table&) override;
    long updateMessageLogData(UserTicket const&, Name const&, long, Text const&,
                              Text const&) override;
    long insertMessageLogData(UserTicket const&, Name const&, Messages const&) override;
    long deleteMessageLogData(UserTicket const&, Name const&, long, Text const&) override;
    counted_ptr<ZANConnectionState> getConnectionState(UserTicket const&,
                                                       Name const&) const override;
    std::vector<int> getMessageIds(UserTicket const&, Name const&, long, bool) override;
    std::string getConnectionProperties(UserTicket const&, Name const&) override;
    long sendMessage(UserTicket const&, Name const&, Text const&) override;
    long sendMessage(UserTicket const&, Name const&, counted_ptr<ZANMessage>) override;
    void sendMultipleMessages(UserTicket const&, Name const&, Messages const&) override;
    long postInternalMessage(UserTicket const&, Name const&, Text const&) override;
    long postInternalMessage(UserTicket const&, Name const&, counted_ptr<ZANMessage>) override;
    void postMultipleInternalMessages(UserTicket const&, Name const&, Messages const&) override;
    std::int64_t getMillisTime(UserTicket const&) override;
};

#endif
