/// `zan::listenGuaranteed`: a guaranteed listener out of a function, which marks what it has
/// consumed.
///
///     auto desk = zan::listenGuaranteed([](ZANEvent const& report) { book(report); });
///     desk->setSubscriptionFilter("stream = 2 AND type = '8'");
///     zan::Subscription const on(ticket, "BROKER", zan::Events::App, desk);
///     desk->retrievePotentiallyLostMessages();
///
/// Threads: as for `zan::listen`.
#ifndef ZANENGINE_COMFORT_LISTENGUARANTEED_H
#define ZANENGINE_COMFORT_LISTENGUARANTEED_H

#include "comfort/FieldReader.h"
#include "comfort/Tag.h"
#include "comfort/listen.h"
#include "comfort/make_counted.h"
#include "events/ZANEvent.h"
#include "guaranteed/ZANGuaranteedEngineMessageListener.h"
#include "infra/counted_ptr.h"

#include <utility>

namespace zan {

/// What `listenGuaranteed` makes: each message that the listener has taken is marked.
class ConsumingListener final : public ZANGuaranteedEngineMessageListener {
public:
    using ZANGuaranteedEngineMessageListener::ZANGuaranteedEngineMessageListener;

    void processEvent(counted_ptr<ZANEvent> event) override {
        ZANGuaranteedEngineMessageListener::processEvent(event);
        FieldReader const message(*event);
        // A transport that does not tell the stream delivers what comes in to most listeners.
        long const stream = message.get(Tag<long>{streamTag}, APP_MSG_FROM_COUNTERPARTY);
        setLastConsumedMessage(event->getConnectionName(),
                               static_cast<int>(message.at(Tag<long>{messageIdTag})),
                               static_cast<MessageTypeIds>(stream));
    }

private:
    static constexpr int messageIdTag = 16580;
    static constexpr int streamTag = 16581;
};

/// A guaranteed listener that calls the function and then marks the message as consumed in its
/// stream, which tag 16581 tells; without that tag the message counts as one of the application
/// that came in. When the function throws, the message is not marked. There has to be an engine;
/// else as for `listen`.
template <class OnEvent>
[[nodiscard]] counted_ptr<ZANGuaranteedEngineMessageListener> listenGuaranteed(OnEvent onEvent) {
    static_assert(takesEvents<OnEvent>,
                  "the function has to take a ZANEvent const& or a counted_ptr<ZANEvent>");
    return make_counted<ZANGuaranteedEngineMessageListener, ConsumingListener>(
        listen(std::move(onEvent)));
}

} // namespace zan

#endif
