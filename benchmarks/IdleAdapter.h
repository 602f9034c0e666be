/// An adapter that answers every operation at once, so that what is left to measure is the facade.
#ifndef ZANENGINE_BENCHMARKS_IDLEADAPTER_H
#define ZANENGINE_BENCHMARKS_IDLEADAPTER_H

#include "adapter/ZANEngineAdapterBase.h"
#include "engine/ZANEngineProxy.h"
#include "guaranteed/ZANGMLAdapterFactory.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

class NoProperties final : public IZANEngineConfigProvider {
public:
    std::string getProperty(std::string const&, std::string const& defaultValue) const override {
        return defaultValue;
    }
};

class IdleAdapter final : public ZANEngineAdapterBase {
public:
    IdleAdapter(counted_ptr<IZANEngineConfigProvider> provider, bool threadSafe)
        : ZANEngineAdapterBase(std::move(provider)), threadSafe_(threadSafe) {}

    /// What a transport does when a message arrives.
    void report(counted_ptr<ZANEvent> const& event) { eventReceived(event); }

    void initialize() override {}
    void uninitialize() override {}
    bool isThreadSafe() override { return threadSafe_; }
    ZANGMLAdapterFactory& getGMLAdapterFactory() override { return gmlAdapterFactory_; }

    void connect(UserTicket const&, std::string const&, counted_ptr<ZANFieldGroup>) override {}
    void connect(UserTicket const&, std::string const&) override {}
    void disconnect(UserTicket const&, std::string const&, std::string const&) override {}
    void resetConnection(UserTicket const&, std::string const&) override {}
    bool pingConnection(UserTicket const&, std::string const&, long) override { return true; }
    bool isConnected(UserTicket const&, std::string const&) override { return true; }
    void getConnectionNameList(UserTicket const&, std::vector<std::string>&) override {}
    void subscribeDirect(UserTicket const&, std::string const&, bool, bool, bool,
                         counted_ptr<ZANGuaranteedEngineMessageListener>&) override {}
    void subscribeDirect(UserTicket const&, std::string const&, bool, bool, bool,
                         counted_ptr<IZANEventListener>&) override {}
    void unsubscribeDirect(UserTicket const&, std::string const&, bool, bool, bool,
                           counted_ptr<ZANGuaranteedEngineMessageListener>&) override {}
    void unsubscribeDirect(UserTicket const&, std::string const&, bool, bool, bool,
                           counted_ptr<IZANEventListener>&) override {}
    void destroyDirectSubscriber(counted_ptr<ZANGuaranteedEngineMessageListener>&) override {}
    void destroyDirectSubscriber(counted_ptr<IZANEventListener>&) override {}
    long sendAdminMessage(UserTicket const&, std::string const&, std::string const&) override {
        return 0;
    }
    long sendAdminMessage(UserTicket const&, std::string const&, counted_ptr<ZANMessage>) override {
        return 0;
    }
    long resendMessages(UserTicket const&, std::string const&, infra::Time const&,
                        infra::Time const&, std::string const&) override {
        return 0;
    }
    std::vector<counted_ptr<ZANMessage>>& retrieveMessagesByDateRange(
        UserTicket const&, std::string const&, std::vector<counted_ptr<ZANMessage>>& messages, long,
        infra::Time const&, infra::Time const&, std::string const&, bool) override {
        return messages;
    }
    std::vector<counted_ptr<ZANMessage>>&
    retrieveMessagesByDateRange(UserTicket const&, std::string const&,
                                std::vector<counted_ptr<ZANMessage>>& messages, infra::Time const&,
                                infra::Time const&, std::string const&, bool) override {
        return messages;
    }
    std::vector<counted_ptr<ZANMessage>>&
    retrieveMessagesByIdRange(UserTicket const&, std::string const&,
                              std::vector<counted_ptr<ZANMessage>>& messages, long, long, long,
                              std::string const&, bool) override {
        return messages;
    }
    std::vector<counted_ptr<ZANMessage>>&
    retrieveMessagesByIdSet(UserTicket const&, std::string const&,
                            std::vector<counted_ptr<ZANMessage>>& messages, long,
                            std::vector<int> const&, std::string const&, bool) override {
        return messages;
    }
    std::vector<counted_ptr<ZANMessage>>&
    retrieveMessagesByQuery(UserTicket const&, std::string const&,
                            std::vector<counted_ptr<ZANMessage>>& messages, long,
                            std::string const&, std::string const&, bool) override {
        return messages;
    }
    std::vector<counted_ptr<ZANMessage>>&
    retrieveMessageChain(UserTicket const&, std::string const&,
                         std::vector<counted_ptr<ZANMessage>>& messages, std::vector<int> const&,
                         std::vector<std::string> const&, bool) override {
        return messages;
    }
    std::vector<counted_ptr<ZANMessage>>&
    retrieveMessagesForResend(UserTicket const&, std::string const&,
                              std::vector<counted_ptr<ZANMessage>>& messages, long, long,
                              std::string const&) override {
        return messages;
    }
    std::vector<std::vector<std::string>>&
    retrieveMessageLogData(UserTicket const&, std::string const&, long, std::string const&,
                           std::string const&, std::string const&,
                           std::vector<std::vector<std::string>>& table) override {
        return table;
    }
    long updateMessageLogData(UserTicket const&, std::string const&, long, std::string const&,
                              std::string const&) override {
        return 0;
    }
    long insertMessageLogData(UserTicket const&, std::string const&,
                              std::vector<counted_ptr<ZANMessage>> const&) override {
        return 0;
    }
    long deleteMessageLogData(UserTicket const&, std::string const&, long,
                              std::string const&) override {
        return 0;
    }
    counted_ptr<ZANConnectionState> getConnectionState(UserTicket const&,
                                                       std::string const&) const override {
        return {};
    }
    std::vector<int> getMessageIds(UserTicket const&, std::string const&, long, bool) override {
        return {};
    }
    std::string getConnectionProperties(UserTicket const&, std::string const&) override {
        return {};
    }
    long sendMessage(UserTicket const&, std::string const&, std::string const&) override {
        return 0;
    }
    long sendMessage(UserTicket const&, std::string const&, counted_ptr<ZANMessage>) override {
        return 0;
    }
    void sendMultipleMessages(UserTicket const&, std::string const&,
                              std::vector<counted_ptr<ZANMessage>> const&) override {}
    long postInternalMessage(UserTicket const&, std::string const&, std::string const&) override {
        return 0;
    }
    long postInternalMessage(UserTicket const&, std::string const&,
                             counted_ptr<ZANMessage>) override {
        return 0;
    }
    void postMultipleInternalMessages(UserTicket const&, std::string const&,
                                      std::vector<counted_ptr<ZANMessage>> const&) override {}
    std::int64_t getMillisTime(UserTicket const&) override { return 0; }

private:
    bool const threadSafe_;
    ZANGMLAdapterFactory gmlAdapterFactory_;
};

/// The facade around an `IdleAdapter`, from construction to destruction.
class IdleEngine {
public:
    explicit IdleEngine(bool threadSafe);
    IdleEngine(IdleEngine const&) = delete;
    IdleEngine& operator=(IdleEngine const&) = delete;
    ~IdleEngine();

    IdleAdapter& adapter() { return *adapter_; }

private:
    IdleAdapter* adapter_ = nullptr;
};

#endif
