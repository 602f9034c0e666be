// Follows an order through its life: the order, its replacement by a cancel, and every report.
#include "comfort/comfort.h"

#include <iostream>
#include <stdexcept>

namespace tag = zan::tag;

namespace {

char const* nameOf(zan::FieldReader const& message) {
    return message.is(zan::MsgType::NewOrderSingle)    ? "order"
           : message.is(zan::MsgType::ExecutionReport) ? "report"
                                                       : "cancel";
}

std::string orDash(std::string const& text) {
    return text.empty() ? "-" : text;
}

// Whether the counterparty says yes or no to the order or the cancel of this ClOrdID.
bool isAnswer(zan::FieldReader const& message, std::string const& id) {
    bool const saysYesOrNo =
        message.is(zan::MsgType::ExecutionReport) || message.is(zan::MsgType::OrderCancelReject);
    return saysYesOrNo && message.text(tag::ClOrdID) == id;
}

void sendAndWait(ZANEngineProxy& engine, UserTicket const& ticket,
                 zan::MessageBuilder const& message) {
    std::string const id = message.fields().getString(tag::ClOrdID);
    zan::Signal answered;
    auto const listener = zan::listen([&](ZANEvent const& event) {
        if (isAnswer(zan::FieldReader(event), id)) {
            answered.raise();
        }
    });
    zan::Subscription const subscription(ticket, "DEMO", zan::Events::App, listener);
    engine.sendMessage(ticket, "DEMO", message);
    if (!answered.waitFor(std::chrono::seconds(10))) {
        throw std::runtime_error("no answer to " + id + " in ten seconds");
    }
}

} // namespace

int main(int argc, char** argv) try {
    zan::EngineScope const engine(Url(argc > 1 ? argv[1] : "embedded:demo"));
    UserTicket const trader("trader", "");
    engine->connect(trader, "DEMO");

    zan::MessageBuilder order(zan::MsgType::NewOrderSingle);
    order.set(tag::Symbol, "IBM")
        .set(tag::Side, zan::Side::Buy)
        .set(tag::OrdType, zan::OrdType::Limit)
        .set(tag::Price, 0.5) // below 1 the counterparty lets it rest
        .set(tag::TransactTime, infra::Time::now());
    sendAndWait(*engine, trader, order.set(tag::ClOrdID, "first").set(tag::OrderQty, 50));
    sendAndWait(*engine, trader, order.set(tag::ClOrdID, "other").set(tag::OrderQty, 70));
    sendAndWait(*engine, trader,
                zan::MessageBuilder(zan::MsgType::OrderCancelRequest)
                    .set(tag::ClOrdID, "second")
                    .set(tag::OrigClOrdID, "first")
                    .set(tag::Symbol, "IBM")
                    .set(tag::Side, zan::Side::Buy)
                    .set(tag::OrderQty, 50)
                    .set(tag::TransactTime, infra::Time::now()));

    // Any member leads to all of them, through ClOrdID, OrigClOrdID and OrderID.
    std::vector<counted_ptr<ZANMessage>> chain;
    engine->retrieveMessageChain(trader, "DEMO", chain, {}, {"second"}, false);
    for (auto const& message : chain) {
        zan::FieldReader const fields(message);
        std::cout << nameOf(fields) << ": ClOrdID " << orDash(fields.text(tag::ClOrdID))
                  << ", OrigClOrdID " << orDash(fields.text(tag::OrigClOrdID)) << ", OrderID "
                  << orDash(fields.text(tag::OrderID)) << ", OrdStatus "
                  << orDash(fields.text(tag::OrdStatus)) << '\n';
    }
    engine->disconnect(trader, "DEMO", "done");
} catch (std::exception const& e) {
    std::cerr << e.what() << std::endl;
    return 1;
}
