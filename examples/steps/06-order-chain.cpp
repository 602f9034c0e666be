// Follows an order through its life: the order, its replacement by a cancel, and every report.
#include "zanengine.h"

#include <chrono>
#include <iostream>
#include <thread>

namespace {

std::string valueOf(ZANMessage const& message, int tag) {
    auto const field = message.getFieldGroup()->getField(tag);
    return field ? field->getValue().asString() : "-";
}

char const* nameOf(std::string const& type) {
    return type == ZAN::MSGTYPE_NEW_ORDER_SINGLE   ? "order"
           : type == ZAN::MSGTYPE_EXECUTION_REPORT ? "report"
                                                   : "cancel";
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

    engine.connect(trader, "DEMO");
    std::size_t sent = 0;
    for (std::string const message : {"35=D|11=first|55=IBM|54=1|38=50|40=2|44=0.5",
                                      "35=D|11=other|55=IBM|54=1|38=70|40=2|44=0.5",
                                      "35=F|11=second|41=first|55=IBM|54=1|38=50"}) {
        engine.sendMessage(trader, "DEMO", message + "|60=20261121-09:30:00");
        waitForReports(engine, trader, ++sent); // one on each
    }

    // Any member leads to all of them, through ClOrdID, OrigClOrdID and OrderID.
    std::vector<counted_ptr<ZANMessage>> chain;
    engine.retrieveMessageChain(trader, "DEMO", chain, {}, {"second"}, false);
    for (auto const& message : chain) {
        std::cout << nameOf(valueOf(*message, 35)) << ": ClOrdID " << valueOf(*message, 11)
                  << ", OrigClOrdID " << valueOf(*message, 41) << ", OrderID "
                  << valueOf(*message, 37) << ", OrdStatus " << valueOf(*message, 39) << '\n';
    }
    engine.disconnect(trader, "DEMO", "done");
    ZANEngineProxy::uninitialize();
} catch (std::exception const& e) {
    std::cerr << e.what() << std::endl;
    return 1;
}
