// Sends an order to a counterparty and waits until it is filled.
#include "zanengine.h"

#include <future>
#include <iostream>

namespace {

std::string valueOf(ZANMessage const& message, int tag) {
    auto const field = message.getFieldGroup()->getField(tag);
    return field ? field->getValue().asString() : "";
}

// The engine calls this on a thread of its own, one event after the other.
class Reports : public IZANEventListener {
public:
    void processEvent(counted_ptr<ZANEvent> event) override {
        auto const message = event->getMessage();
        if (valueOf(*message, 35) != ZAN::MSGTYPE_EXECUTION_REPORT) {
            return; // the order itself passes by as well
        }
        std::cout << "report on " << valueOf(*message, 11) << ": " << valueOf(*message, 14)
                  << " filled, " << valueOf(*message, 151) << " open" << std::endl;
        if (valueOf(*message, 39) == "2") {
            filled.set_value();
        }
    }

    std::promise<void> filled;
};

} // namespace

int main() try {
    ZANEngineProxy::initialize(Url("embedded:demo"));
    ZANEngineProxy& engine = ZANEngineProxy::getInstance();
    UserTicket const trader("trader", "");
    auto* const reports = new Reports; // the counted pointer owns it
    counted_ptr<IZANEventListener> listener(reports);

    engine.subscribe(trader, listener, "DEMO", ZANEngineDefs::APP_EVENT_TYPE);
    engine.connect(trader, "DEMO");
    engine.sendMessage(trader, "DEMO",
                       "35=D|11=order-1|55=IBM|54=1|38=100|40=2|44=95.5|60=20261121-09:30:00");
    reports->filled.get_future().wait();
    engine.disconnect(trader, "DEMO", "done");
    ZANEngineProxy::uninitialize();
} catch (std::exception const& e) {
    std::cerr << e.what() << std::endl;
    return 1;
}
