// Follows everything that happens on a connection: states, session messages, application messages.
//
// This step stays on the bare contract, without the headers of comfort/: a listener is a class, and
// what a counterparty may leave out has a default.
#include "zanengine.h"

#include <atomic>
#include <future>
#include <iostream>

namespace {

// Gets its events straight from the connection, in the order of its message log.
class Everything : public IZANEventListener {
public:
    void processEvent(counted_ptr<ZANEvent> event) override {
        counted_ptr<ZANFieldGroup> const fields = event->getMessage()->getFieldGroup();
        bool const goesOut = fields->getString(49) == "CLIENT"; // SenderCompID
        std::cout << (goesOut ? "out: " : "in:  ") << "type " << fields->getString(35)
                  << ", sequence number " << fields->getString(34) << std::endl;
        std::string const status = fields->getString(39);
        bool const isClosed = status == "2" || status == "8"; // filled, rejected
        if (isClosed && !isClosed_.exchange(true)) {          // a promise is kept once
            closed.set_value();
        }
    }

    void processStateEvent(counted_ptr<ZANConnectionStateEvent> event) override {
        counted_ptr<ZANConnectionState> const state = event->getConnectionState();
        std::cout << "state: link " << (state->isLinkActive() ? "up" : "down") << ", "
                  << (state->isSessionActive() ? "logged on" : "logged off") << std::endl;
    }

    std::promise<void> closed;

private:
    std::atomic<bool> isClosed_{false};
};

} // namespace

int main(int argc, char** argv) try {
    ZANEngineProxy::initialize(Url(argc > 1 ? argv[1] : "embedded:demo"));
    ZANEngineProxy& engine = ZANEngineProxy::getInstance(); // a reference: the facade is one
    UserTicket const trader("trader", "");
    auto* const everything = new Everything;
    counted_ptr<IZANEventListener> listener(everything); // owns it
    std::future<void> closed = everything->closed.get_future();
    bool const adminEvents = true, appEvents = true, stateEvents = true;

    engine.subscribeDirect(trader, "DEMO", adminEvents, appEvents, stateEvents, listener);
    engine.connect(trader, "DEMO");
    engine.sendMessage(trader, "DEMO",
                       "35=D|11=order-3|55=IBM|54=2|38=1|40=1|60=20261121-09:30:00");
    if (closed.wait_for(std::chrono::seconds(10)) != std::future_status::ready) {
        std::cout << "neither filled nor rejected in ten seconds" << std::endl;
    }
    engine.disconnect(trader, "DEMO", "done");
    ZANEngineProxy::uninitialize();
} catch (std::exception const& e) {
    std::cerr << e.what() << std::endl;
    if (ZANEngineProxy::isInitialized()) {
        ZANEngineProxy::uninitialize();
    }
    return 1;
}
