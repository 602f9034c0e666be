// A listener that misses nothing: what came while it was away is delivered when it comes back.
#include "comfort/comfort.h"

#include <iostream>
#include <stdexcept>

namespace tag = zan::tag;

namespace {

// The desk marks each report when this has returned: it will not be delivered again.
void work(ZANEvent const& event) {
    zan::FieldReader const report(event);
    std::cout << "order " << report.text(tag::ClOrdID) << ", OrdStatus "
              << report.text(tag::OrdStatus)
              << (report.text(tag::PossResend) == "Y" ? ", delivered again" : "") << std::endl;
}

// Lets the desk have what it missed, then what comes until the action has ended.
template <class Action>
void withDesk(UserTicket const& ticket, Action const& action) {
    auto desk = zan::listenGuaranteed(work);
    desk->setSubscriptionFilter("stream = 2 AND type = '8'"); // reports that come in
    zan::Subscription const subscription(ticket, "DEMO", zan::Events::App, desk);
    desk->retrievePotentiallyLostMessages();
    action();
}

// Returns when the order is filled, or closed otherwise, and the desk has been told: listeners get
// events one by one.
void trade(ZANEngineProxy& engine, UserTicket const& ticket, std::string const& id) {
    zan::Signal closed;
    auto const listener = zan::listen([&](ZANEvent const& event) {
        if (zan::closesOrder(zan::FieldReader(event))) {
            closed.raise();
        }
    });
    zan::Subscription const subscription(ticket, "DEMO", zan::Events::App, listener);
    engine.sendMessage(ticket, "DEMO",
                       zan::MessageBuilder(zan::MsgType::NewOrderSingle)
                           .set(tag::ClOrdID, id)
                           .set(tag::Symbol, "IBM")
                           .set(tag::Side, zan::Side::Buy)
                           .set(tag::OrderQty, 1)
                           .set(tag::OrdType, zan::OrdType::Market)
                           .set(tag::TransactTime, infra::Time::now()));
    if (!closed.waitFor(std::chrono::seconds(10))) {
        throw std::runtime_error("order " + id + " is still open after ten seconds");
    }
}

} // namespace

int main(int argc, char** argv) try {
    // The marks are kept under the name of the client.
    zan::EngineScope const engine(Url(argc > 1 ? argv[1] : "embedded:demo?client=desk"));
    UserTicket const trader("trader", "");
    engine->connect(trader, "DEMO");
    withDesk(trader, [&] { trade(*engine, trader, "seen"); });
    std::cout << "the desk is away" << std::endl;
    trade(*engine, trader, "missed");
    withDesk(trader, [] {});
} catch (std::exception const& e) {
    std::cerr << e.what() << std::endl;
    return 1;
}
