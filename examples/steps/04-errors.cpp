// What goes wrong, and how an application is told: each kind of failure is a class of its own.
#include "comfort/comfort.h"

#include <iostream>

namespace tag = zan::tag;

namespace {

template <class Action>
void attempt(std::string const& what, Action const& action) {
    try {
        action();
        std::cout << what << ": done\n";
    } catch (ZANConnectionUnknownException const& e) {
        std::cout << what << ": unknown connection\n    " << e.what() << '\n';
    } catch (ZANNotConnectedException const& e) {
        std::cout << what << ": not connected\n    " << e.what() << '\n';
    } catch (ZANInvalidMessageException const& e) {
        std::cout << what << ": invalid message\n    " << e.what() << '\n';
    } catch (ZANEngineException const& e) {
        std::cout << what << ": another failure of the engine\n    " << e.what() << '\n';
    }
}

counted_ptr<ZANMessage> order(char const* id, char const* symbol) {
    return zan::MessageBuilder(zan::MsgType::NewOrderSingle)
        .set(tag::ClOrdID, id)
        .set(tag::Symbol, symbol)
        .set(tag::Side, zan::Side::Buy)
        .set(tag::OrderQty, 100)
        .set(tag::OrdType, zan::OrdType::Market)
        .set(tag::TransactTime, infra::Time::now());
}

} // namespace

int main(int argc, char** argv) try {
    zan::EngineScope const scope(Url(argc > 1 ? argv[1] : "embedded:demo"));
    ZANEngineProxy& engine = *scope;
    UserTicket const trader("trader", "");

    attempt("a wrong name", [&] { engine.connect(trader, "NOWHERE"); });
    attempt("too early", [&] { engine.sendMessage(trader, "DEMO", "35=D|11=order-4"); });
    attempt("connecting", [&] { engine.connect(trader, "DEMO"); });
    attempt("connecting again", [&] { engine.connect(trader, "DEMO"); });
    attempt("an empty field", [&] { engine.sendMessage(trader, "DEMO", "35=D|11=|55=IBM"); });
    attempt("the wrong kind", [&] { engine.sendMessage(trader, "DEMO", "35=0"); });

    // All or none: the first bad message refuses the batch.
    attempt("a batch", [&] {
        engine.sendMultipleMessages(trader, "DEMO",
                                    {order("order-5", "IBM"), order("order-6", "")});
    });
    auto const sent = engine.getMessageIds(
        trader, "DEMO", ZANGuaranteedEngineMessageListener::APP_MSG_TO_COUNTERPARTY, false);
    std::cout << sent.size() << " orders were sent\n";
    engine.disconnect(trader, "DEMO", "done");
} catch (std::exception const& e) {
    std::cerr << e.what() << std::endl;
    return 1;
}
