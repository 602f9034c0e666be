// The demo: an application trades with a counterparty over real FIX, and shows the conversation.
#include "Conversation.h"
#include "ReportCollector.h"
#include "comfort/comfort.h"

#include <iostream>
#include <stdexcept>

namespace tag = zan::tag;

namespace {

std::string const demoConnection = "DEMO";
UserTicket const trader("trader", "");

void check(bool isTrue, std::string const& what) {
    if (!isTrue) {
        throw std::runtime_error("it is not true that " + what);
    }
}

double numberIn(MessageFields const& fields, int tag) {
    Value value;
    value.setString(valueOf(fields, tag));
    return value.asDouble();
}

// Built as a model, with a repeating group: who acts for whom.
counted_ptr<ZANMessage> limitOrder() {
    return zan::MessageBuilder(zan::MsgType::NewOrderSingle)
        .set(tag::ClOrdID, "demo-1")
        .set(tag::Symbol, "IBM")
        .set(tag::Side, zan::Side::Buy)
        .set(tag::OrderQty, 100)
        .set(tag::OrdType, zan::OrdType::Limit)
        .set(tag::Price, 95.5)
        .set(tag::TransactTime, infra::Time::now())
        .add(zan::GroupBuilder(tag::NoPartyIDs)
                 .set(tag::PartyID, "DESK-7")
                 .set(tag::PartyIDSource, zan::PartyIDSource::Proprietary)
                 .set(tag::PartyRole, zan::PartyRole::CustomerAccount));
}

void tradeLimitOrder(ZANEngineProxy& engine, Conversation& conversation) {
    conversation.explain("An order to buy 100 IBM at 95.5: it is acknowledged, then filled in two "
                         "parts.");
    engine.sendMessage(trader, demoConnection, limitOrder());
    auto const acknowledged = conversation.waitForReport("demo-1", '0');
    check(numberIn(acknowledged, tag::LeavesQty) == 100, "all of the new order is open");
    auto const filled = conversation.waitForReport("demo-1", '2');
    double quantity = 0;
    int fills = 0;
    for (auto const& report : conversation.reportsOn("demo-1")) {
        if (report.contains(tag::LastQty) && valueOf(report, tag::OrdStatus) != "0") {
            quantity += numberIn(report, tag::LastQty);
            ++fills;
        }
    }
    check(fills == 2, "the order was filled in two parts");
    check(quantity == 100 && numberIn(filled, tag::CumQty) == 100 &&
              numberIn(filled, tag::LeavesQty) == 0,
          "the fills add up to the order");
}

void cancelRestingOrder(ZANEngineProxy& engine, Conversation& conversation) {
    conversation.explain("An order that nobody takes, sent as text: it rests, and is cancelled.");
    std::string const now = infra::Time::now().toString();
    engine.sendMessage(trader, demoConnection,
                       "35=D|11=demo-2|55=IBM|54=1|38=50|40=2|44=0.5|60=" + now);
    conversation.waitForReport("demo-2", '0');
    engine.sendMessage(trader, demoConnection,
                       "35=F|41=demo-2|11=demo-3|55=IBM|54=1|38=50|60=" + now);
    auto const cancelled = conversation.waitForReport("demo-3", '4');
    check(numberIn(cancelled, tag::CumQty) == 0 && numberIn(cancelled, tag::LeavesQty) == 0,
          "nothing of the cancelled order was filled, and nothing is open");
}

std::string marketOrder() {
    return "35=D|11=demo-4|55=IBM|54=2|38=30|40=1|60=" + infra::Time::now().toString();
}

void ping(ZANEngineProxy& engine, Conversation& conversation) {
    conversation.explain("Is the counterparty there? A test request, answered by a heartbeat.");
    check(engine.pingConnection(trader, demoConnection, 5000), "the counterparty answers");
    conversation.waitForMessage(ZAN::MSGTYPE_HEARTBEAT);
}

using Messages = std::vector<counted_ptr<ZANMessage>>;

void print(Messages const& messages) {
    for (counted_ptr<ZANMessage> const& message : messages) {
        std::cout << lineOf(*message);
    }
}

void showLog(ZANEngineProxy& engine, Conversation& conversation) {
    conversation.explain("All of it is in the message log, each message once, stored before it was "
                         "sent or delivered.\nAs a table (streams: 0 and 1 admin in and out, 2 and "
                         "3 application in and out):");
    std::vector<std::vector<std::string>> table;
    engine.retrieveMessageLogData(trader, demoConnection, -1,
                                  "id,time,stream,type,seq,sender,target", "", "id", table);
    std::cout << linesOf(table);
    check(table.size() == 1 + 12, "the log has the 12 messages of the conversation so far");

    conversation.explain("A query: type = '8' AND CAST(tag(32) AS INTEGER) > 0, the fills.");
    Messages fills;
    engine.retrieveMessagesByQuery(trader, demoConnection, fills, -1,
                                   "type = '8' AND CAST(tag(32) AS INTEGER) > 0", "", false);
    print(fills);
    check(fills.size() == 2, "there were two fills");

    conversation.explain("The chain of demo-3: the cancel, the order that it belongs to, and their "
                         "reports.");
    Messages chain;
    engine.retrieveMessageChain(trader, demoConnection, chain, {}, {"demo-3"}, false);
    print(chain);
    check(chain.size() == 4, "order, report, cancel and report make the chain");
}

using Guaranteed = counted_ptr<ZANGuaranteedEngineMessageListener>;

Guaranteed attachGuaranteed(ZANEngineProxy& engine, counted_ptr<IZANEventListener> const& desk) {
    Guaranteed listener(new ZANGuaranteedEngineMessageListener(desk));
    engine.subscribeDirect(trader, demoConnection, false, true, false, listener);
    listener->setSubscriptionFilter("type = '8'");
    return listener;
}

void recoverLostMessages(ZANEngineProxy& engine, Conversation& conversation) {
    conversation.explain("A guaranteed listener marks what it has consumed, and goes away. An "
                         "order is filled meanwhile.");
    std::vector<int> const before =
        engine.getMessageIds(trader, demoConnection,
                             ZANGuaranteedEngineMessageListener::APP_MSG_FROM_COUNTERPARTY, true);
    check(!before.empty(), "reports came in");
    auto* const desk = new ReportCollector;
    counted_ptr<IZANEventListener> const held(desk);
    Guaranteed listener = attachGuaranteed(engine, held);
    listener->setLastConsumedAppMessageFromCounterPartyId(demoConnection, before.front());
    engine.destroyDirectSubscriber(listener);
    listener.reset();
    engine.sendMessage(trader, demoConnection, marketOrder());
    conversation.waitForReport("demo-4", '2');

    conversation.explain("It comes back and asks for what it may have lost (PossResend tells that "
                         "it may know it):");
    listener = attachGuaranteed(engine, held);
    listener->retrievePotentiallyLostMessages();
    engine.destroyDirectSubscriber(listener);
    std::cout << desk->lines();
    check(desk->count() == 3, "the three reports on demo-4 were delivered again, and nothing else");
}

void logOut(ZANEngineProxy& engine, Conversation& conversation) {
    conversation.explain("Good night: both sides log out, and the link is closed.");
    engine.disconnect(trader, demoConnection, "end of the demo");
    conversation.waitForState(FLAG_LOGGED_OUT | FLAG_DISCONNECTED);
    check(conversation.sent("5") == 1 && conversation.received("5") == 1,
          "each side sent one Logout");
}

void showConversation(Url const& url) {
    std::cout << "An application with an engine inside it, and a counterparty that fills orders, "
                 "over real FIX.\n"
                 "->  goes out, <-  comes in, --  is the state of the connection; the time is "
                 "UTC.\n";
    zan::EngineScope const scope(url);
    ZANEngineProxy& engine = *scope;
    auto* const conversation = new Conversation;
    counted_ptr<IZANEventListener> const listener(conversation);
    zan::Subscription const on(trader, demoConnection, zan::Events::All, listener);

    conversation->explain("The connection is opened.");
    engine.connect(trader, demoConnection);
    conversation->waitForState(FLAG_LINK_ACTIVE | FLAG_SESSION_ACTIVE);
    tradeLimitOrder(engine, *conversation);
    cancelRestingOrder(engine, *conversation);
    ping(engine, *conversation);
    showLog(engine, *conversation);
    recoverLostMessages(engine, *conversation);
    logOut(engine, *conversation);
    conversation->explain("All as it should be: filled, cancelled, answered, logged, found again, "
                          "recovered, logged out.");
}

} // namespace

int main(int argc, char** argv) {
    try {
        showConversation(Url(argc > 1 ? argv[1] : "embedded:demo"));
    } catch (std::exception const& e) {
        std::cerr << "\nThe demo failed: " << e.what() << std::endl;
        return 1;
    }
}
