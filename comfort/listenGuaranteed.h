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
        consumed(event);
    }
};

/// A guaranteed listener that calls the function and then marks the message as `consumed` does.
/// When the function throws, the message is not marked and comes again. There has to be an engine;
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
