#ifndef ZANENGINE_CONFORMANCE_RECORDINGADAPTER_H
#define ZANENGINE_CONFORMANCE_RECORDINGADAPTER_H

#include "adapter/ZANEngineAdapterBase.h"
#include "conformance/CallText.h"
#include "conformance/EmptyConfigProvider.h"
#include "guaranteed/ZANGMLAdapterFactory.h"
#include "guaranteed/ZANGuaranteedEngineMessageListener.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace zan::conformance {

/// An adapter without an engine. It writes down every call with its arguments, in order and as
/// `callText` shows them, and answers with the results that the test has put in.
///
/// Any thread may call it. Results and hooks are set before calls come from other threads.
class RecordingAdapter : public ZANEngineAdapterBase {
public:
    using Messages = std::vector<counted_ptr<ZANMessage>>;
    using Table = std::vector<std::vector<std::string>>;
    using GMLListener = ZANGuaranteedEngineMessageListener;

    explicit RecordingAdapter(
        counted_ptr<IZANEngineConfigProvider> provider = emptyConfigProvider())
        : ZANEngineAdapterBase(provider) {}

    // What the calls answer.
    bool threadSafe = false;
    bool truth = false;
    long number = 0;
    std::int64_t millis = 0;
    counted_ptr<ZANConnectionState> state;
    std::vector<int> ids;
    std::string properties;
    /// Appended to what the caller gives.
    std::vector<std::string> connectionNames;
    Messages messages;
    Table table;
    /// Returned instead of the caller's own when not null.
    Messages* otherMessages = nullptr;
    Table* otherTable = nullptr;
    std::unique_ptr<ZANGMLAdapterFactory> gmlFactory = std::make_unique<ZANGMLAdapterFactory>();

    /// Runs inside every recorded call, after it was written down; it may throw or wait.
    std::function<void()> onCall;

    template <class Exception>
    void throwFromCalls(Exception exception) {
        onCall = [exception] { throw exception; };
    }

    std::vector<std::string> calls() const {
        std::lock_guard<std::mutex> const lock(mutex_);
        return calls_;
    }

    void forgetCalls() {
        std::lock_guard<std::mutex> const lock(mutex_);
        calls_.clear();
    }

    /// Hands an event to the application, as an adapter's thread does.
    void report(counted_ptr<ZANEvent> event) { eventReceived(event); }

    using ZANEngineAdapterBase::setConfigProvider;

    void initialize() override { record("initialize"); }
    void uninitialize() override { record("uninitialize"); }
    bool isThreadSafe() override {
        record("isThreadSafe");
        return threadSafe;
    }
    ZANGMLAdapterFactory& getGMLAdapterFactory() override {
        record("getGMLAdapterFactory");
        return *gmlFactory;
    }

    void connect(UserTicket const& ticket, std::string const& name,
                 counted_ptr<ZANFieldGroup> logonFields) override {
        record("connect", ticket, name, logonFields);
    }
    void connect(UserTicket const& ticket, std::string const& name) override {
        record("connect", ticket, name);
    }
    void disconnect(UserTicket const& ticket, std::string const& name,
                    std::string const& reason) override {
        record("disconnect", ticket, name, reason);
    }
    void resetConnection(UserTicket const& ticket, std::string const& name) override {
        record("resetConnection", ticket, name);
    }
    bool pingConnection(UserTicket const& ticket, std::string const& name,
                        long timeoutMillis) override {
        return answer(truth, "pingConnection", ticket, name, timeoutMillis);
    }
    bool isConnected(UserTicket const& ticket, std::string const& name) override {
        return answer(truth, "isConnected", ticket, name);
    }
    void getConnectionNameList(UserTicket const& ticket, std::vector<std::string>& names) override {
        record("getConnectionNameList", ticket, names);
        names.insert(names.end(), connectionNames.begin(), connectionNames.end());
    }

    void subscribeDirect(UserTicket const& ticket, std::string const& name, bool admin, bool app,
                         bool stateEvents, counted_ptr<GMLListener>& listener) override {
        record("subscribeDirect", ticket, name, admin, app, stateEvents, listener);
    }
    void subscribeDirect(UserTicket const& ticket, std::string const& name, bool admin, bool app,
                         bool stateEvents, counted_ptr<IZANEventListener>& listener) override {
        record("subscribeDirect", ticket, name, admin, app, stateEvents, listener);
    }
    void unsubscribeDirect(UserTicket const& ticket, std::string const& name, bool admin, bool app,
                           bool stateEvents, counted_ptr<GMLListener>& listener) override {
        record("unsubscribeDirect", ticket, name, admin, app, stateEvents, listener);
    }
    void unsubscribeDirect(UserTicket const& ticket, std::string const& name, bool admin, bool app,
                           bool stateEvents, counted_ptr<IZANEventListener>& listener) override {
        record("unsubscribeDirect", ticket, name, admin, app, stateEvents, listener);
    }
    void destroyDirectSubscriber(counted_ptr<GMLListener>& listener) override {
        record("destroyDirectSubscriber", listener);
    }
    void destroyDirectSubscriber(counted_ptr<IZANEventListener>& listener) override {
        record("destroyDirectSubscriber", listener);
    }

    long sendAdminMessage(UserTicket const& ticket, std::string const& name,
                          std::string const& message) override {
        return answer(number, "sendAdminMessage", ticket, name, message);
    }
    long sendAdminMessage(UserTicket const& ticket, std::string const& name,
                          counted_ptr<ZANMessage> message) override {
        return answer(number, "sendAdminMessage", ticket, name, message);
    }
    long sendMessage(UserTicket const& ticket, std::string const& name,
                     std::string const& message) override {
        return answer(number, "sendMessage", ticket, name, message);
    }
    long sendMessage(UserTicket const& ticket, std::string const& name,
                     counted_ptr<ZANMessage> message) override {
        return answer(number, "sendMessage", ticket, name, message);
    }
    void sendMultipleMessages(UserTicket const& ticket, std::string const& name,
                              Messages const& toSend) override {
        record("sendMultipleMessages", ticket, name, toSend);
    }
    long postInternalMessage(UserTicket const& ticket, std::string const& name,
                             std::string const& message) override {
        return answer(number, "postInternalMessage", ticket, name, message);
    }
    long postInternalMessage(UserTicket const& ticket, std::string const& name,
                             counted_ptr<ZANMessage> message) override {
        return answer(number, "postInternalMessage", ticket, name, message);
    }
    void postMultipleInternalMessages(UserTicket const& ticket, std::string const& name,
                                      Messages const& toPost) override {
        record("postMultipleInternalMessages", ticket, name, toPost);
    }
    long resendMessages(UserTicket const& ticket, std::string const& name, infra::Time const& from,
                        infra::Time const& to, std::string const& filter) override {
        return answer(number, "resendMessages", ticket, name, from, to, filter);
    }

    Messages& retrieveMessagesByDateRange(UserTicket const& ticket, std::string const& name,
                                          Messages& out, long stream, infra::Time const& from,
                                          infra::Time const& to, std::string const& filter,
                                          bool newestFirst) override {
        return fill(out, "retrieveMessagesByDateRange", ticket, name, out, stream, from, to, filter,
                    newestFirst);
    }
    Messages& retrieveMessagesByDateRange(UserTicket const& ticket, std::string const& name,
                                          Messages& out, infra::Time const& from,
                                          infra::Time const& to, std::string const& filter,
                                          bool newestFirst) override {
        return fill(out, "retrieveMessagesByDateRange", ticket, name, out, from, to, filter,
                    newestFirst);
    }
    Messages& retrieveMessagesByIdRange(UserTicket const& ticket, std::string const& name,
                                        Messages& out, long stream, long fromId, long toId,
                                        std::string const& filter, bool newestFirst) override {
        return fill(out, "retrieveMessagesByIdRange", ticket, name, out, stream, fromId, toId,
                    filter, newestFirst);
    }
    Messages& retrieveMessagesByIdSet(UserTicket const& ticket, std::string const& name,
                                      Messages& out, long stream, std::vector<int> const& wanted,
                                      std::string const& filter, bool newestFirst) override {
        return fill(out, "retrieveMessagesByIdSet", ticket, name, out, stream, wanted, filter,
                    newestFirst);
    }
    Messages& retrieveMessagesByQuery(UserTicket const& ticket, std::string const& name,
                                      Messages& out, long stream, std::string const& where,
                                      std::string const& orderBy, bool newestFirst) override {
        return fill(out, "retrieveMessagesByQuery", ticket, name, out, stream, where, orderBy,
                    newestFirst);
    }
    Messages& retrieveMessageChain(UserTicket const& ticket, std::string const& name, Messages& out,
                                   std::vector<int> const& wanted,
                                   std::vector<std::string> const& clientOrderIds,
                                   bool newestFirst) override {
        return fill(out, "retrieveMessageChain", ticket, name, out, wanted, clientOrderIds,
                    newestFirst);
    }
    Messages& retrieveMessagesForResend(UserTicket const& ticket, std::string const& name,
                                        Messages& out, long fromSequence, long toSequence,
                                        std::string const& filter) override {
        return fill(out, "retrieveMessagesForResend", ticket, name, out, fromSequence, toSequence,
                    filter);
    }

    Table& retrieveMessageLogData(UserTicket const& ticket, std::string const& name, long stream,
                                  std::string const& columns, std::string const& where,
                                  std::string const& orderBy, Table& out) override {
        record("retrieveMessageLogData", ticket, name, stream, columns, where, orderBy, out);
        out.insert(out.end(), table.begin(), table.end());
        return otherTable ? *otherTable : out;
    }
    long updateMessageLogData(UserTicket const& ticket, std::string const& name, long stream,
                              std::string const& assignments, std::string const& where) override {
        return answer(number, "updateMessageLogData", ticket, name, stream, assignments, where);
    }
    long insertMessageLogData(UserTicket const& ticket, std::string const& name,
                              Messages const& toInsert) override {
        return answer(number, "insertMessageLogData", ticket, name, toInsert);
    }
    long deleteMessageLogData(UserTicket const& ticket, std::string const& name, long stream,
                              std::string const& where) override {
        return answer(number, "deleteMessageLogData", ticket, name, stream, where);
    }

    counted_ptr<ZANConnectionState> getConnectionState(UserTicket const& ticket,
                                                       std::string const& name) const override {
        return answer(state, "getConnectionState", ticket, name);
    }
    std::vector<int> getMessageIds(UserTicket const& ticket, std::string const& name, long stream,
                                   bool newestFirst) override {
        return answer(ids, "getMessageIds", ticket, name, stream, newestFirst);
    }
    std::string getConnectionProperties(UserTicket const& ticket,
                                        std::string const& name) override {
        return answer(properties, "getConnectionProperties", ticket, name);
    }
    std::int64_t getMillisTime(UserTicket const& ticket) override {
        return answer(millis, "getMillisTime", ticket);
    }

private:
    template <class... Arguments>
    void record(char const* operation, Arguments const&... arguments) const {
        {
            std::lock_guard<std::mutex> const lock(mutex_);
            calls_.push_back(callText(operation, arguments...));
        }
        if (onCall) {
            onCall();
        }
    }

    template <class Result, class... Arguments>
    Result answer(Result const& result, char const* operation,
                  Arguments const&... arguments) const {
        record(operation, arguments...);
        return result;
    }

    template <class... Arguments>
    Messages& fill(Messages& out, char const* operation, Arguments const&... arguments) const {
        record(operation, arguments...);
        out.insert(out.end(), messages.begin(), messages.end());
        return otherMessages ? *otherMessages : out;
    }

    mutable std::mutex mutex_;
    mutable std::vector<std::string> calls_;
};

} // namespace zan::conformance

#endif
