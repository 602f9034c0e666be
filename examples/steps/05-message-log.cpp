// Reads the message log: as messages, by an expression, and as a table.
#include "zanengine.h"

#include <chrono>
#include <iostream>
#include <thread>

namespace {

using Messages = std::vector<counted_ptr<ZANMessage>>;

std::string valueOf(ZANMessage const& message, int tag) {
    auto const field = message.getFieldGroup()->getField(tag);
    return field ? field->getValue().asString() : "-";
}

void print(std::string const& title, Messages const& messages) {
    std::cout << title << '\n';
    for (auto const& message : messages) {
        std::cout << "    id " << message->getConnectionMessageId() << ", type "
                  << valueOf(*message, 35) << ", order " << valueOf(*message, 11) << ", symbol "
                  << valueOf(*message, 55) << '\n';
    }
}

// Waits until the log has so many messages that came in.
void waitForReports(ZANEngineProxy& engine, UserTicket const& ticket, std::size_t count) {
    long const in = ZANGuaranteedEngineMessageListener::APP_MSG_FROM_COUNTERPARTY;
    while (engine.getMessageIds(ticket, "DEMO", in, false).size() < count) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

} // namespace

int main() try {
    ZANEngineProxy::initialize(Url("embedded:demo"));
    ZANEngineProxy& engine = ZANEngineProxy::getInstance();
    UserTicket const trader("trader", "");
    long const out = ZANGuaranteedEngineMessageListener::APP_MSG_TO_COUNTERPARTY;
    long const everyStream = -1;

    engine.connect(trader, "DEMO");
    int number = 0;
    for (std::string const symbol : {"IBM", "MSFT", "IBM"}) {
        // Below a price of 1 the counterparty lets an order rest.
        engine.sendMessage(trader, "DEMO",
                           "35=D|11=order-" + std::to_string(++number) + "|55=" + symbol +
                               "|54=1|38=100|40=2|44=0.5|60=20261121-09:30:00");
        waitForReports(engine, trader, static_cast<std::size_t>(number));
    }
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
    ZANEngineProxy::uninitialize();
} catch (std::exception const& e) {
    std::cerr << e.what() << std::endl;
    return 1;
}
