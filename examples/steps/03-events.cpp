// Follows everything that happens on a connection: states, session messages, application messages.
#include "zanengine.h"

#include <future>
#include <iostream>

namespace {

std::string valueOf(ZANMessage const& message, int tag) {
    auto const field = message.getFieldGroup()->getField(tag);
    return field ? field->getValue().asString() : "";
}

// Gets its events straight from the connection, in the order of its message log.
class Everything : public IZANEventListener {
public:
    void processEvent(counted_ptr<ZANEvent> event) override {
        auto const message = event->getMessage();
        bool const goesOut = valueOf(*message, 49) == "CLIENT"; // SenderCompID
        std::cout << (goesOut ? "out: " : "in:  ") << "type " << valueOf(*message, 35)
                  << ", sequence number " << valueOf(*message, 34) << std::endl;
        if (valueOf(*message, 39) == "2") {
            filled.set_value();
        }
    }

    void processStateEvent(counted_ptr<ZANConnectionStateEvent> event) override {
        auto const state = event->getConnectionState();
        std::cout << "state: link " << (state->isLinkActive() ? "up" : "down") << ", "
                  << (state->isSessionActive() ? "logged on" : "logged off") << std::endl;
    }

    std::promise<void> filled;
};

} // namespace

int main() try {
    ZANEngineProxy::initialize(Url("embedded:demo"));
    ZANEngineProxy& engine = ZANEngineProxy::getInstance();
    UserTicket const trader("trader", "");
    auto* const everything = new Everything;
    counted_ptr<IZANEventListener> listener(everything);
    bool const adminEvents = true, appEvents = true, stateEvents = true;

    engine.subscribeDirect(trader, "DEMO", adminEvents, appEvents, stateEvents, listener);
    engine.connect(trader, "DEMO");
    engine.sendMessage(trader, "DEMO",
                       "35=D|11=order-3|55=IBM|54=2|38=1|40=1|60=20261121-09:30:00");
    everything->filled.get_future().wait();
    engine.disconnect(trader, "DEMO", "done");
    ZANEngineProxy::uninitialize();
} catch (std::exception const& e) {
    std::cerr << e.what() << std::endl;
    return 1;
}
