/// `zan::listen`: a listener out of one or two functions.
///
///     auto listener = zan::listen([](ZANEvent const& event) { std::cout << event; });
///     engine.subscribe(ticket, listener, "BROKER", ZANEngineDefs::APP_EVENT_TYPE);
///
/// Threads: the functions are called like the operations of `IZANEventListener`: on the adapter's
/// threads, at the same time on several of them when the listener is subscribed to more than one
/// connection.
#ifndef ZANENGINE_COMFORT_LISTEN_H
#define ZANENGINE_COMFORT_LISTEN_H

#include "adapter/IZANEventListener.h"
#include "comfort/make_counted.h"
#include "events/ZANConnectionStateEvent.h"
#include "events/ZANEvent.h"
#include "infra/counted_ptr.h"

#include <type_traits>
#include <utility>

namespace zan {

/// Whether a function can be called with a message event: as `ZANEvent const&`, or as
/// `counted_ptr<ZANEvent>` by a function that keeps it.
template <class Function>
inline constexpr bool takesEvents = std::is_invocable_v<Function&, ZANEvent const&> ||
                                    std::is_invocable_v<Function&, counted_ptr<ZANEvent>>;

/// The same for a state event, as `ZANConnectionStateEvent&` or as its `counted_ptr`.
template <class Function>
inline constexpr bool takesStateEvents =
    std::is_invocable_v<Function&, ZANConnectionStateEvent&> ||
    std::is_invocable_v<Function&, counted_ptr<ZANConnectionStateEvent>>;

/// What `listen` makes.
template <class OnEvent, class OnState>
class FunctionListener final : public IZANEventListener {
public:
    FunctionListener(OnEvent onEvent, OnState onState)
        : onEvent_(std::move(onEvent)), onState_(std::move(onState)) {}

    void processEvent(counted_ptr<ZANEvent> event) override {
        if constexpr (std::is_invocable_v<OnEvent&, ZANEvent const&>) {
            onEvent_(std::as_const(*event));
        } else {
            onEvent_(std::move(event));
        }
    }

    void processStateEvent(counted_ptr<ZANConnectionStateEvent> event) override {
        if constexpr (std::is_invocable_v<OnState&, ZANConnectionStateEvent&>) {
            onState_(*event);
        } else {
            onState_(std::move(event));
        }
    }

private:
    OnEvent onEvent_;
    OnState onState_;
};

/// A listener that calls `onEvent` for each message event and `onState` for each state event; state
/// events come to direct subscribers only. It owns copies of the functions; what they hold by
/// reference has to outlive the engine, or the end of the subscription. An exception of a function
/// passes as one of a listener's does.
template <class OnEvent, class OnState>
[[nodiscard]] counted_ptr<IZANEventListener> listen(OnEvent onEvent, OnState onState) {
    static_assert(takesEvents<OnEvent>,
                  "the first function has to take a ZANEvent const& or a counted_ptr<ZANEvent>");
    static_assert(takesStateEvents<OnState>,
                  "the second function has to take a ZANConnectionStateEvent& or its counted_ptr");
    return make_counted<IZANEventListener, FunctionListener<OnEvent, OnState>>(std::move(onEvent),
                                                                               std::move(onState));
}

/// The same with one function, by what it takes: `ZANEvent const&` for message events,
/// `ZANConnectionStateEvent&` for state events. Events of the other kind are passed over.
template <class Function>
[[nodiscard]] counted_ptr<IZANEventListener> listen(Function function) {
    static_assert(takesEvents<Function> || takesStateEvents<Function>,
                  "the function has to take a ZANEvent const&, a ZANConnectionStateEvent&, or the "
                  "counted_ptr of one of them");
    if constexpr (takesEvents<Function>) {
        return listen(std::move(function), [](ZANConnectionStateEvent&) {});
    } else {
        return listen([](ZANEvent const&) {}, std::move(function));
    }
}

} // namespace zan

#endif
