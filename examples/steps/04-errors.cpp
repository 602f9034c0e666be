// What goes wrong, and how an application is told: each kind of failure is a class of its own.
#include "zanengine.h"

#include <iostream>

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
    counted_ptr<ZANFieldGroup> const fields(new ZANFieldGroup(ZAN::MSGTYPE_NEW_ORDER_SINGLE));
    fields->setFieldValue(11, id);
    fields->setFieldValue(55, symbol);
    fields->setFieldValue(54, '1');
    fields->setFieldValue(38, 100L);
    fields->setFieldValue(40, '1');
    fields->setFieldValue(60, "20261121-09:30:00");
    return counted_ptr<ZANMessage>(new ZANMessage(fields));
}

} // namespace

int main() try {
    ZANEngineProxy::initialize(Url("embedded:demo"));
    ZANEngineProxy& engine = ZANEngineProxy::getInstance();
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
    ZANEngineProxy::uninitialize();
} catch (std::exception const& e) {
    std::cerr << e.what() << std::endl;
    return 1;
}
