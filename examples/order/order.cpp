// Sends one order and prints what the counterparty makes of it.
#include "comfort/comfort.h"

#include <iostream>

namespace tag = zan::tag;

int main(int argc, char** argv) try {
    UserTicket const me("me", "");
    zan::Signal closed;
    auto reports = zan::listen([&](ZANEvent const& event) {
        zan::FieldReader const report(event);
        if (report.is(zan::MsgType::ExecutionReport))
            std::cout << event;
        if (zan::closesOrder(report)) // filled, rejected and the like
            closed.raise();
    });
    zan::EngineScope const engine(Url(argc > 1 ? argv[1] : "embedded:demo"));
    std::string const name = zan::connectionNames(*engine, me).at(0);
    engine->subscribe(me, reports, name, ZANEngineDefs::APP_EVENT_TYPE);
    engine->connect(me, name);
    engine->sendMessage(me, name,
                        zan::MessageBuilder(zan::MsgType::NewOrderSingle)
                            .set(tag::ClOrdID, "order-1")
                            .set(tag::Symbol, "IBM")
                            .set(tag::Side, zan::Side::Buy)
                            .set(tag::OrderQty, 100)
                            .set(tag::OrdType, zan::OrdType::Limit)
                            .set(tag::Price, 95.5)
                            .set(tag::TransactTime, infra::Time::now()));
    if (!closed.waitFor(std::chrono::seconds(10)))
        std::cerr << "the order is still open after ten seconds" << std::endl;
    engine->disconnect(me, name, "done");
} catch (std::exception const& e) {
    std::cerr << e.what() << std::endl;
    return 1;
}
