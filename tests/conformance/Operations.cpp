#include "conformance/Operations.h"

#include "conformance/EventRecorder.h"
#include "conformance/Trial.h"
#include "infra/Time.h"

namespace zan::conformance {

namespace {

using Name = std::string const&;

ZANEngineProxy& engine() {
    return ZANEngineProxy::getInstance();
}

UserTicket const& me() {
    return Trial::me;
}

counted_ptr<ZANMessage> someMessage(char const* type) {
    counted_ptr<ZANFieldGroup> const body(new ZANFieldGroup(std::string(type)));
    body->setFieldValue(11, "x");
    return counted_ptr<ZANMessage>(new ZANMessage(body));
}

void add(std::vector<Operation>& all, char const* name, Ability ability,
         std::function<void(Name)> call) {
    all.push_back({name, ability, std::move(call)});
}

void addConnecting(std::vector<Operation>& all) {
    add(all, "connect", Ability::Connections, [](Name name) { engine().connect(me(), name); });
    add(all, "connect", Ability::Connections,
        [](Name name) { engine().connect(me(), name, counted_ptr<ZANFieldGroup>()); });
    add(all, "disconnect", Ability::Connections,
        [](Name name) { engine().disconnect(me(), name, ""); });
    add(all, "isConnected", Ability::Connections,
        [](Name name) { engine().isConnected(me(), name); });
    add(all, "getConnectionState", Ability::Connections,
        [](Name name) { engine().getConnectionState(me(), name); });
    add(all, "resetConnection", Ability::Sessions,
        [](Name name) { engine().resetConnection(me(), name); });
    add(all, "pingConnection", Ability::Sessions,
        [](Name name) { engine().pingConnection(me(), name, 1); });
    add(all, "getConnectionProperties", Ability::Properties,
        [](Name name) { engine().getConnectionProperties(me(), name); });
}

void addSending(std::vector<Operation>& all) {
    add(all, "sendMessage", Ability::Sending,
        [](Name name) { engine().sendMessage(me(), name, "35=D|11=x"); });
    add(all, "sendMessage", Ability::Sending,
        [](Name name) { engine().sendMessage(me(), name, someMessage("D")); });
    add(all, "sendAdminMessage", Ability::Admin,
        [](Name name) { engine().sendAdminMessage(me(), name, "35=0"); });
    add(all, "sendAdminMessage", Ability::Admin,
        [](Name name) { engine().sendAdminMessage(me(), name, someMessage("0")); });
    add(all, "sendMultipleMessages", Ability::Batches,
        [](Name name) { engine().sendMultipleMessages(me(), name, {someMessage("D")}); });
    add(all, "postInternalMessage", Ability::Posting,
        [](Name name) { engine().postInternalMessage(me(), name, "35=D|11=x"); });
    add(all, "postInternalMessage", Ability::Posting,
        [](Name name) { engine().postInternalMessage(me(), name, someMessage("D")); });
    add(all, "postMultipleInternalMessages", Ability::Posting,
        [](Name name) { engine().postMultipleInternalMessages(me(), name, {someMessage("D")}); });
    add(all, "resendMessages", Ability::Resending,
        [](Name name) { engine().resendMessages(me(), name, infra::Time(0), infra::Time(1), ""); });
}

void addDirect(std::vector<Operation>& all) {
    add(all, "subscribeDirect", Ability::Direct, [](Name name) {
        counted_ptr<IZANEventListener> listener(new EventRecorder);
        engine().subscribeDirect(me(), name, true, true, true, listener);
    });
    add(all, "unsubscribeDirect", Ability::Direct, [](Name name) {
        counted_ptr<IZANEventListener> listener(new EventRecorder);
        engine().unsubscribeDirect(me(), name, true, true, true, listener);
    });
}

void addRetrieving(std::vector<Operation>& all) {
    add(all, "retrieveMessagesByDateRange", Ability::Log, [](Name name) {
        Messages found;
        engine().retrieveMessagesByDateRange(me(), name, found, -1, infra::Time(0), infra::Time(1),
                                             "", false);
    });
    add(all, "retrieveMessagesByDateRange", Ability::Log, [](Name name) {
        Messages found;
        engine().retrieveMessagesByDateRange(me(), name, found, infra::Time(0), infra::Time(1), "",
                                             false);
    });
    add(all, "retrieveMessagesByIdRange", Ability::Log, [](Name name) {
        Messages found;
        engine().retrieveMessagesByIdRange(me(), name, found, -1, 1, 2, "", false);
    });
    add(all, "retrieveMessagesByIdSet", Ability::Log, [](Name name) {
        Messages found;
        engine().retrieveMessagesByIdSet(me(), name, found, -1, {1}, "", false);
    });
    add(all, "retrieveMessageChain", Ability::Log, [](Name name) {
        Messages found;
        engine().retrieveMessageChain(me(), name, found, {1}, {"x"}, false);
    });
    add(all, "getMessageIds", Ability::Log,
        [](Name name) { engine().getMessageIds(me(), name, -1, false); });
    add(all, "retrieveMessagesByQuery", Ability::Expressions, [](Name name) {
        Messages found;
        engine().retrieveMessagesByQuery(me(), name, found, -1, "", "", false);
    });
    add(all, "retrieveMessagesForResend", Ability::Resending, [](Name name) {
        Messages found;
        engine().retrieveMessagesForResend(me(), name, found, 1, 0, "");
    });
}

void addTables(std::vector<Operation>& all) {
    add(all, "retrieveMessageLogData", Ability::Log, [](Name name) {
        Table table;
        engine().retrieveMessageLogData(me(), name, -1, "", "", "", table);
    });
    add(all, "updateMessageLogData", Ability::Edits,
        [](Name name) { engine().updateMessageLogData(me(), name, -1, "note = 'x'", "id < 0"); });
    add(all, "insertMessageLogData", Ability::Edits,
        [](Name name) { engine().insertMessageLogData(me(), name, {someMessage("D")}); });
    add(all, "deleteMessageLogData", Ability::Edits,
        [](Name name) { engine().deleteMessageLogData(me(), name, -1, "id < 0"); });
}

} // namespace

std::vector<Operation> const& namedOperations() {
    static std::vector<Operation> const operations = [] {
        std::vector<Operation> all;
        addConnecting(all);
        addSending(all);
        addDirect(all);
        addRetrieving(all);
        addTables(all);
        return all;
    }();
    return operations;
}

} // namespace zan::conformance
