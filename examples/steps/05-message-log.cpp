// Reads the message log: as messages, by an expression, and as a table.
#include "comfort/comfort.h"

#include <iostream>
#include <stdexcept>

namespace tag = zan::tag;

namespace {

using Messages = std::vector<counted_ptr<ZANMessage>>;

void print(std::string const& title, Messages const& messages) {
    std::cout << title << '\n';
    for (auto const& message : messages) {
        zan::FieldReader const fields(message);
        std::cout << "    id " << fields.messageId() << ", type " << fields.type() << ", order "
                  << fields.text(tag::ClOrdID) << ", symbol " << fields.text(tag::Symbol) << '\n';
    }
}

// Sends an order and waits for the first report on it.
void sendAndWait(ZANEngineProxy& engine, UserTicket const& ticket, std::string const& id,
                 std::string const& symbol) {
    zan::Signal reported;
    auto const listener = zan::listen([&](ZANEvent const& event) {
        zan::FieldReader const report(event);
        if (report.is(zan::MsgType::ExecutionReport) && report.text(tag::ClOrdID) == id) {
            reported.raise();
        }
    });
    zan::Subscription const subscription(ticket, "DEMO", zan::Events::App, listener);
    engine.sendMessage(ticket, "DEMO",
                       zan::MessageBuilder(zan::MsgType::NewOrderSingle)
                           .set(tag::ClOrdID, id)
                           .set(tag::Symbol, symbol)
                           .set(tag::Side, zan::Side::Buy)
                           .set(tag::OrderQty, 100)
                           .set(tag::OrdType, zan::OrdType::Limit)
                           .set(tag::Price, 0.5) // below 1 the counterparty lets it rest
                           .set(tag::TransactTime, infra::Time::now()));
    if (!reported.waitFor(std::chrono::seconds(10))) {
        throw std::runtime_error("no report on " + id + " in ten seconds");
    }
}

} // namespace

int main(int argc, char** argv) try {
    zan::EngineScope const scope(Url(argc > 1 ? argv[1] : "embedded:demo"));
    ZANEngineProxy& engine = *scope;
    UserTicket const trader("trader", "");
    long const out = ZANGuaranteedEngineMessageListener::APP_MSG_TO_COUNTERPARTY;
    long const everyStream = -1;

    engine.connect(trader, "DEMO");
    sendAndWait(engine, trader, "order-1", "IBM");
    sendAndWait(engine, trader, "order-2", "MSFT");
    sendAndWait(engine, trader, "order-3", "IBM");
    engine.disconnect(trader, "DEMO", "done"); // the log needs no session

    Messages found;
    engine.retrieveMessagesByQuery(trader, "DEMO", found, out, "tag(55) = 'IBM'", "", false);
    print("orders for IBM:", found);

    found.clear();
    engine.retrieveMessagesByDateRange(trader, "DEMO", found, everyStream, infra::Time(0),
                                       infra::Time::now(), "type = '8' AND tag(11) = 'order-2'",
                                       false);
    print("reports on order-2:", found);

    std::vector<std::vector<std::string>> table;
    engine.retrieveMessageLogData(trader, "DEMO", out, "stream,type,seq,sender,target", "", "id",
                                  table);
    std::cout << "as a table:\n";
    for (auto const& row : table) {
        for (std::string const& cell : row) {
            std::cout << "    " << cell;
        }
        std::cout << '\n';
    }
} catch (std::exception const& e) {
    std::cerr << e.what() << std::endl;
    return 1;
}
