// Sends one order and prints what the counterparty makes of it.
#include "zanengine.h"

#include <future>
#include <iostream>

class Reports : public IZANEventListener {
public:
    std::promise<void> filled;

    void processEvent(counted_ptr<ZANEvent> event) override {
        auto const fields = event->getMessage()->getFieldGroup();
        if (fields->getField(35)->getValue().asString() != ZAN::MSGTYPE_EXECUTION_REPORT)
            return;
        std::cout << *event;
        if (fields->getField(151)->getValue().asDouble() == 0) // nothing is left open
            filled.set_value();
    }
};

int main(int argc, char** argv) try {
    ZANEngineProxy::initialize(Url(argc > 1 ? argv[1] : "embedded:demo"));
    ZANEngineProxy& engine = ZANEngineProxy::getInstance();
    UserTicket const me("me", "");
    std::vector<std::string> names;
    engine.getConnectionNameList(me, names);

    auto* const reports = new Reports;
    counted_ptr<IZANEventListener> listener(reports);
    engine.subscribe(me, listener, names.at(0), ZANEngineDefs::APP_EVENT_TYPE);
    engine.connect(me, names.at(0));
    engine.sendMessage(me, names.at(0),
                       "35=D|11=order-1|55=IBM|54=1|38=100|40=2|44=95.5|60=20261121-09:30:00");
    reports->filled.get_future().wait();
    engine.disconnect(me, names.at(0), "done");
    ZANEngineProxy::uninitialize();
} catch (std::exception const& e) {
    std::cerr << e.what() << std::endl;
    return 1;
}
