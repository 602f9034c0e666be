// A listener that misses nothing: what came while it was away is delivered when it comes back.
#include "zanengine.h"

#include <future>
#include <iostream>

namespace {

using Guaranteed = counted_ptr<ZANGuaranteedEngineMessageListener>;

std::string valueOf(ZANMessage const& message, int tag) {
    auto const field = message.getFieldGroup()->getField(tag);
    return field ? field->getValue().asString() : "";
}

class Desk : public IZANEventListener {
public:
    void processEvent(counted_ptr<ZANEvent> event) override {
        auto const message = event->getMessage();
        std::cout << "order " << valueOf(*message, 11) << ", OrdStatus " << valueOf(*message, 39)
                  << (valueOf(*message, 97) == "Y" ? ", delivered again" : "") << std::endl;
        // Mark it when its work is done: it will not be delivered again.
        guaranteed->setLastConsumedAppMessageFromCounterPartyId(event->getConnectionName(),
                                                                message->getConnectionMessageId());
    }

    ZANGuaranteedEngineMessageListener* guaranteed = nullptr;
};

class Fill : public IZANEventListener {
public:
    void processEvent(counted_ptr<ZANEvent> event) override {
        if (valueOf(*event->getMessage(), 39) == "2") {
            seen.set_value();
        }
    }

    std::promise<void> seen;
};

Guaranteed attach(ZANEngineProxy& engine, UserTicket const& ticket) {
    auto* const desk = new Desk;
    counted_ptr<IZANEventListener> const listener(desk);
    Guaranteed guaranteed(new ZANGuaranteedEngineMessageListener(listener));
    desk->guaranteed = guaranteed.get();
    guaranteed->setSubscriptionFilter("stream = 2 AND type = '8'"); // reports that come in
    engine.subscribeDirect(ticket, "DEMO", false, true, false, guaranteed);
    guaranteed->retrievePotentiallyLostMessages();
    return guaranteed;
}

// Returns when the order is filled and the desk has been told: listeners get events one by one.
void trade(ZANEngineProxy& engine, UserTicket const& ticket, std::string const& id) {
    auto* const fill = new Fill;
    counted_ptr<IZANEventListener> listener(fill);
    engine.subscribeDirect(ticket, "DEMO", false, true, false, listener);
    engine.sendMessage(ticket, "DEMO",
                       "35=D|11=" + id + "|55=IBM|54=1|38=1|40=1|60=20261121-09:30:00");
    fill->seen.get_future().wait();
    engine.destroyDirectSubscriber(listener);
}

} // namespace

int main() {
    // The marks are kept under the name of the client.
    ZANEngineProxy::initialize(Url("embedded:demo?client=desk"));
    ZANEngineProxy& engine = ZANEngineProxy::getInstance();
    UserTicket const trader("trader", "");
    engine.connect(trader, "DEMO");
    Guaranteed desk = attach(engine, trader);
    trade(engine, trader, "seen");
    engine.destroyDirectSubscriber(desk);
    desk.reset();
    std::cout << "the desk is away" << std::endl;
    trade(engine, trader, "missed");
    desk = attach(engine, trader);
    engine.destroyDirectSubscriber(desk);
    ZANEngineProxy::uninitialize();
}
