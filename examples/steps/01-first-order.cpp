// Sends an order to a counterparty and waits until nothing of it is open any more.
#include "comfort/comfort.h"

#include <iostream>

namespace tag = zan::tag;

int main(int argc, char** argv) try {
    UserTicket const trader("trader", "");
    zan::Signal closed;

    // The engine calls this on a thread of its own, one event after the other.
    auto reports = zan::listen([&](ZANEvent const& event) {
        zan::FieldReader const report(event);
        if (!report.is(zan::MsgType::ExecutionReport)) {
            return; // the order itself passes by as well
        }
        std::cout << "report on " << report.text(tag::ClOrdID) << ": " << report.text(tag::CumQty)
                  << " filled, " << report.text(tag::LeavesQty) << " open" << std::endl;
        if (zan::closesOrder(report)) {
            closed.raise();
        }
    });

    // The engine ends before what the listener refers to, also after an exception.
    zan::EngineScope const engine(Url(argc > 1 ? argv[1] : "embedded:demo"));
    engine->subscribe(trader, reports, "DEMO", ZANEngineDefs::APP_EVENT_TYPE);
    engine->connect(trader, "DEMO");
    engine->sendMessage(trader, "DEMO",
                        zan::MessageBuilder(zan::MsgType::NewOrderSingle)
                            .set(tag::ClOrdID, "order-1")
                            .set(tag::Symbol, "IBM")
                            .set(tag::Side, zan::Side::Buy)
                            .set(tag::OrderQty, 100)
                            .set(tag::OrdType, zan::OrdType::Limit)
                            .set(tag::Price, 95.5)
                            .set(tag::TransactTime, infra::Time::now()));
    if (!closed.waitFor(std::chrono::seconds(10))) {
        std::cout << "no last report in ten seconds" << std::endl;
    }
    engine->disconnect(trader, "DEMO", "done");
} catch (std::exception const& e) {
    std::cerr << e.what() << std::endl;
    return 1;
}
