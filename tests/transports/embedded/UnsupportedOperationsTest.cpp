#include "EmbeddedFixture.h"

#include "errors/ZANEngineException.h"
#include "guaranteed/ZANGuaranteedEngineMessageListener.h"
#include "infra/Time.h"

#include <functional>

namespace {

using UnsupportedOperationsTest = EmbeddedTest;

struct Operation {
    char const* name;
    std::function<void(ZANEngineProxy&)> call;
};

std::vector<Operation> operationsWithALog() {
    static UserTicket const me("tester", "");
    static std::string const c = "C";
    static infra::Time const time(0);
    static std::vector<counted_ptr<ZANMessage>> messages;
    static std::vector<std::vector<std::string>> table;
    static counted_ptr<ZANGuaranteedEngineMessageListener> nobody;
    using Engine = ZANEngineProxy&;
    return {
        {"subscribeDirect", [](Engine e) { e.subscribeDirect(me, c, true, true, true, nobody); }},
        {"unsubscribeDirect",
         [](Engine e) { e.unsubscribeDirect(me, c, true, true, true, nobody); }},
        {"destroyDirectSubscriber", [](Engine e) { e.destroyDirectSubscriber(nobody); }},
        {"resetConnection", [](Engine e) { e.resetConnection(me, c); }},
        {"resendMessages", [](Engine e) { e.resendMessages(me, c, time, time, ""); }},
        {"retrieveMessagesByDateRange",
         [](Engine e) { e.retrieveMessagesByDateRange(me, c, messages, 0, time, time, "", true); }},
        {"retrieveMessagesByDateRange",
         [](Engine e) { e.retrieveMessagesByDateRange(me, c, messages, time, time, "", true); }},
        {"retrieveMessagesByIdRange",
         [](Engine e) { e.retrieveMessagesByIdRange(me, c, messages, 0, 1, 2, "", true); }},
        {"retrieveMessagesByIdSet",
         [](Engine e) { e.retrieveMessagesByIdSet(me, c, messages, 0, {1}, "", true); }},
        {"retrieveMessagesByQuery",
         [](Engine e) { e.retrieveMessagesByQuery(me, c, messages, 0, "", "", true); }},
        {"retrieveMessageChain",
         [](Engine e) { e.retrieveMessageChain(me, c, messages, {1}, {"a"}, true); }},
        {"retrieveMessagesForResend",
         [](Engine e) { e.retrieveMessagesForResend(me, c, messages, 1, 0, ""); }},
        {"retrieveMessageLogData",
         [](Engine e) { e.retrieveMessageLogData(me, c, 0, "", "", "", table); }},
        {"updateMessageLogData", [](Engine e) { e.updateMessageLogData(me, c, 0, "", ""); }},
        {"insertMessageLogData", [](Engine e) { e.insertMessageLogData(me, c, messages); }},
        {"deleteMessageLogData", [](Engine e) { e.deleteMessageLogData(me, c, 0, ""); }},
        {"getMessageIds", [](Engine e) { e.getMessageIds(me, c, 0, true); }},
        {"sendMultipleMessages", [](Engine e) { e.sendMultipleMessages(me, c, messages); }},
        {"postInternalMessage", [](Engine e) { e.postInternalMessage(me, c, "35=D"); }},
        {"postInternalMessage",
         [](Engine e) { e.postInternalMessage(me, c, counted_ptr<ZANMessage>()); }},
        {"postMultipleInternalMessages",
         [](Engine e) { e.postMultipleInternalMessages(me, c, messages); }},
    };
}

TEST_F(UnsupportedOperationsTest, SayThatThereIsNoMessageLog) {
    port_ = 5001;
    startEngine();
    for (Operation const& operation : operationsWithALog()) {
        EXPECT_EQ(failureOf<ZANEngineException>([&] { operation.call(engine()); }),
                  std::string(operation.name) + ": this engine keeps no message log");
    }
}

} // namespace
