#include "engine/ZANEngineProxy.h"

#include "conformance/CallText.h"
#include "errors/ZANNotConnectedException.h"
#include "support/RecordingListener.h"
#include "support/RunningEngine.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace {

using zan::conformance::callText;

using Messages = std::vector<counted_ptr<ZANMessage>>;
using Table = std::vector<std::vector<std::string>>;

counted_ptr<ZANMessage> newMessage() {
    return counted_ptr<ZANMessage>(
        new ZANMessage(counted_ptr<ZANFieldGroup>(new ZANFieldGroup("D"))));
}

class EngineOperations : public testing::Test {
protected:
    ZANEngineProxy& proxy() { return engine.proxy(); }

    // That the last call reached the adapter with exactly these arguments.
    template <class... Arguments>
    void expectCall(char const* operation, Arguments const&... arguments) {
        EXPECT_EQ(std::vector({callText(operation, arguments...)}), engine.adapter().calls());
        engine.adapter().forgetCalls();
    }

    RunningEngine engine;
    UserTicket const ticket{"user", "secret"};
    std::string const name = "A";
    std::string const text = "35=D";
    std::string const filter = "type = 'D'";
    infra::Time const from{1000};
    infra::Time const to{2000};
    Messages messages;
    std::vector<int> const ids{1, 2};
};

TEST_F(EngineOperations, ForwardTheConnectionOperations) {
    counted_ptr<ZANFieldGroup> const fields(new ZANFieldGroup);
    proxy().connect(ticket, name, fields);
    expectCall("connect", ticket, name, fields);
    proxy().connect(ticket, name);
    expectCall("connect", ticket, name);
    proxy().disconnect(ticket, name, "end of day");
    expectCall("disconnect", ticket, name, "end of day");
    proxy().resetConnection(ticket, name);
    expectCall("resetConnection", ticket, name);
    engine.adapter().truth = true;
    EXPECT_TRUE(proxy().pingConnection(ticket, name, 500));
    expectCall("pingConnection", ticket, name, 500);
    EXPECT_TRUE(proxy().isConnected(ticket, name));
    expectCall("isConnected", ticket, name);
    engine.adapter().truth = false;
    EXPECT_FALSE(proxy().isConnected(ticket, name));
    engine.adapter().forgetCalls();
    engine.adapter().connectionNames = {"A", "B"};
    std::vector<std::string> names{"before"};
    proxy().getConnectionNameList(ticket, names);
    expectCall("getConnectionNameList", ticket, names);
    EXPECT_EQ(std::vector<std::string>({"before", "A", "B"}), names);
}

template <class Listener>
void expectDirectSubscriptionForwarded(RunningEngine& engine, UserTicket const& ticket,
                                       counted_ptr<Listener>& listener) {
    for (int flags = 0; flags < 8; ++flags) {
        bool const admin = (flags & 1) != 0;
        bool const app = (flags & 2) != 0;
        bool const state = (flags & 4) != 0;
        engine.proxy().subscribeDirect(ticket, "A", admin, app, state, listener);
        engine.proxy().unsubscribeDirect(ticket, "A", admin, app, state, listener);
        EXPECT_EQ(
            std::vector({callText("subscribeDirect", ticket, "A", admin, app, state, listener),
                         callText("unsubscribeDirect", ticket, "A", admin, app, state, listener)}),
            engine.adapter().calls());
        engine.adapter().forgetCalls();
    }
    engine.proxy().destroyDirectSubscriber(listener);
    EXPECT_EQ(std::vector({callText("destroyDirectSubscriber", listener)}),
              engine.adapter().calls());
    engine.adapter().forgetCalls();
}

TEST_F(EngineOperations, ForwardDirectSubscriptionsAndKeepThemOutOfTheRegistry) {
    counted_ptr<IZANEventListener> listener(new RecordingListener);
    expectDirectSubscriptionForwarded(engine, ticket, listener);
    EXPECT_EQ(1u, listener.use_count());
    testing::internal::CaptureStdout();
    {
        counted_ptr<ZANGuaranteedEngineMessageListener> guaranteed(
            new ZANGuaranteedEngineMessageListener(listener));
        engine.adapter().forgetCalls();
        expectDirectSubscriptionForwarded(engine, ticket, guaranteed);
    }
    testing::internal::GetCapturedStdout();
}

TEST_F(EngineOperations, ForwardSendingAndPosting) {
    auto const message = newMessage();
    engine.adapter().number = 77;
    EXPECT_EQ(77, proxy().sendAdminMessage(ticket, name, text));
    expectCall("sendAdminMessage", ticket, name, text);
    EXPECT_EQ(77, proxy().sendAdminMessage(ticket, name, message));
    expectCall("sendAdminMessage", ticket, name, message);
    EXPECT_EQ(77, proxy().sendMessage(ticket, name, text));
    expectCall("sendMessage", ticket, name, text);
    EXPECT_EQ(77, proxy().sendMessage(ticket, name, message));
    expectCall("sendMessage", ticket, name, message);
    EXPECT_EQ(77, proxy().postInternalMessage(ticket, name, text));
    expectCall("postInternalMessage", ticket, name, text);
    EXPECT_EQ(77, proxy().postInternalMessage(ticket, name, message));
    expectCall("postInternalMessage", ticket, name, message);
    proxy().sendMultipleMessages(ticket, name, messages);
    expectCall("sendMultipleMessages", ticket, name, messages);
    proxy().postMultipleInternalMessages(ticket, name, messages);
    expectCall("postMultipleInternalMessages", ticket, name, messages);
    EXPECT_EQ(77, proxy().resendMessages(ticket, name, from, to, filter));
    expectCall("resendMessages", ticket, name, from, to, filter);
}

TEST_F(EngineOperations, ForwardRetrievals) {
    proxy().retrieveMessagesByDateRange(ticket, name, messages, 2L, from, to, filter, true);
    expectCall("retrieveMessagesByDateRange", ticket, name, messages, 2, from, to, filter, true);
    proxy().retrieveMessagesByDateRange(ticket, name, messages, from, to, filter, false);
    expectCall("retrieveMessagesByDateRange", ticket, name, messages, from, to, filter, false);
    proxy().retrieveMessagesByIdRange(ticket, name, messages, -1, 5, 9, filter, true);
    expectCall("retrieveMessagesByIdRange", ticket, name, messages, -1, 5, 9, filter, true);
    proxy().retrieveMessagesByIdSet(ticket, name, messages, 3, ids, filter, false);
    expectCall("retrieveMessagesByIdSet", ticket, name, messages, 3, ids, filter, false);
    proxy().retrieveMessagesByQuery(ticket, name, messages, 4, filter, "time", true);
    expectCall("retrieveMessagesByQuery", ticket, name, messages, 4, filter, "time", true);
    std::vector<std::string> const orders{"o-1"};
    proxy().retrieveMessageChain(ticket, name, messages, ids, orders, true);
    expectCall("retrieveMessageChain", ticket, name, messages, ids, orders, true);
    proxy().retrieveMessagesForResend(ticket, name, messages, 1, 0, filter);
    expectCall("retrieveMessagesForResend", ticket, name, messages, 1, 0, filter);
}

TEST_F(EngineOperations, RetrievalsDoNotClearTheVectorAndReturnTheAdaptersReference) {
    messages.push_back(newMessage());
    engine.adapter().messages = {newMessage()};
    auto& own = proxy().retrieveMessagesByIdRange(ticket, name, messages, 0, 1, 2, "", false);
    EXPECT_EQ(&messages, &own);
    EXPECT_EQ(2u, messages.size());
    Messages other;
    engine.adapter().otherMessages = &other;
    EXPECT_EQ(&other,
              &proxy().retrieveMessagesByDateRange(ticket, name, messages, 0, from, to, "", false));
    EXPECT_EQ(&other,
              &proxy().retrieveMessagesByDateRange(ticket, name, messages, from, to, "", false));
    EXPECT_EQ(&other,
              &proxy().retrieveMessagesByIdRange(ticket, name, messages, 0, 1, 2, "", false));
    EXPECT_EQ(&other, &proxy().retrieveMessagesByIdSet(ticket, name, messages, 0, ids, "", false));
    EXPECT_EQ(&other, &proxy().retrieveMessagesByQuery(ticket, name, messages, 0, "", "", false));
    EXPECT_EQ(&other, &proxy().retrieveMessageChain(ticket, name, messages, ids, {}, false));
    EXPECT_EQ(&other, &proxy().retrieveMessagesForResend(ticket, name, messages, 1, 2, ""));
}

TEST_F(EngineOperations, ForwardTheMessageLogOperations) {
    Table table;
    Table other;
    engine.adapter().otherTable = &other;
    EXPECT_EQ(&other,
              &proxy().retrieveMessageLogData(ticket, name, 1, "id,time", filter, "id", table));
    expectCall("retrieveMessageLogData", ticket, name, 1, "id,time", filter, "id", table);
    engine.adapter().number = 3;
    EXPECT_EQ(3, proxy().updateMessageLogData(ticket, name, 1, "note = 'x'", filter));
    expectCall("updateMessageLogData", ticket, name, 1, "note = 'x'", filter);
    EXPECT_EQ(3, proxy().insertMessageLogData(ticket, name, messages));
    expectCall("insertMessageLogData", ticket, name, messages);
    EXPECT_EQ(3, proxy().deleteMessageLogData(ticket, name, 1, filter));
    expectCall("deleteMessageLogData", ticket, name, 1, filter);
}

TEST_F(EngineOperations, ForwardQuestionsAndReturnTheAnswersUnchanged) {
    EXPECT_FALSE(proxy().getConnectionState(ticket, name));
    expectCall("getConnectionState", ticket, name);
    EXPECT_TRUE(proxy().getMessageIds(ticket, name, 2, true).empty());
    expectCall("getMessageIds", ticket, name, 2, true);
    EXPECT_EQ("", proxy().getConnectionProperties(ticket, name));
    expectCall("getConnectionProperties", ticket, name);

    counted_ptr<ZANConnectionState> const state(new ZANConnectionState);
    engine.adapter().state = state;
    engine.adapter().ids = {3, 1};
    engine.adapter().properties = "HeartBtInt=30";
    engine.adapter().millis = INT64_C(1700000000123);
    ZANEngineProxy const& constant = proxy();
    EXPECT_EQ(state, constant.getConnectionState(ticket, name));
    EXPECT_EQ(std::vector<int>({3, 1}), proxy().getMessageIds(ticket, name, 2, false));
    EXPECT_EQ("HeartBtInt=30", proxy().getConnectionProperties(ticket, name));
    engine.adapter().forgetCalls();
    EXPECT_EQ(INT64_C(1700000000123), proxy().getMillisTime(ticket));
    expectCall("getMillisTime", ticket);
}

TEST_F(EngineOperations, HandOutTheAdaptersGuaranteedDeliveryFactory) {
    EXPECT_EQ(engine.adapter().gmlFactory.get(), &proxy().getGMLAdapterFactory());
    expectCall("getGMLAdapterFactory");
}

TEST_F(EngineOperations, PassTheAdaptersExceptionAndGiveTheMutexAndTheMessageBack) {
    auto const message = newMessage();
    engine.adapter().throwFromCalls(ZANNotConnectedException("logged off"));
    try {
        proxy().sendMessage(ticket, name, message);
        FAIL();
    } catch (ZANNotConnectedException const& e) {
        EXPECT_EQ("logged off", e.getMessage());
    }
    EXPECT_EQ(1u, message.use_count());
    engine.adapter().onCall = nullptr;
    std::thread([&] { proxy().isConnected(ticket, name); }).join();
}

TEST_F(EngineOperations, PassExceptionsOfAnyKind) {
    engine.adapter().onCall = [] { throw 42; };
    EXPECT_THROW(proxy().getMillisTime(ticket), int);
}

TEST_F(EngineOperations, CopyACountedArgumentForTheAdapterAndReleaseItAgain) {
    auto const message = newMessage();
    std::uint64_t during = 0;
    engine.adapter().onCall = [&] { during = message.use_count(); };
    proxy().sendMessage(ticket, name, message);
    EXPECT_EQ(3u, during);
    EXPECT_EQ(1u, message.use_count());
}

} // namespace
