/// `zan::Subscription`: a listener gets the events of a connection for as long as an object lives.
///
/// Threads: made and ended on any thread that holds no lock which the listener takes.
#ifndef ZANENGINE_COMFORT_SUBSCRIPTION_H
#define ZANENGINE_COMFORT_SUBSCRIPTION_H

#include "adapter/IZANEventListener.h"
#include "engine/ZANEngineProxy.h"
#include "guaranteed/ZANGuaranteedEngineMessageListener.h"
#include "infra/Diagnostics.h"
#include "infra/UserTicket.h"
#include "infra/counted_ptr.h"

#include <exception>
#include <string>
#include <type_traits>
#include <utility>

namespace zan {

/// Kinds of events, joined by `|`.
enum class Events : unsigned { Admin = 1, App = 2, State = 4, All = 7 };

constexpr Events operator|(Events left, Events right) {
    return static_cast<Events>(static_cast<unsigned>(left) | static_cast<unsigned>(right));
}

/// Whether `kind` is among the kinds.
constexpr bool includes(Events kinds, Events kind) {
    return (static_cast<unsigned>(kinds) & static_cast<unsigned>(kind)) != 0;
}

/// Direct, so state events are among what it can bring. Declared after what the listener refers to,
/// it ends before that: with the embedded engine no event comes later.
template <class Listener>
class Subscription {
    static_assert(std::is_same_v<Listener, IZANEventListener> ||
                      std::is_same_v<Listener, ZANGuaranteedEngineMessageListener>,
                  "a counted_ptr of one of the two classes of listeners subscribes");

public:
    /// `subscribeDirect`, with its exceptions.
    Subscription(UserTicket const& ticket, std::string const& connection, Events kinds,
                 counted_ptr<Listener> listener)
        : listener_(std::move(listener)) {
        ZANEngineProxy::getInstance().subscribeDirect(
            ticket, connection, includes(kinds, Events::Admin), includes(kinds, Events::App),
            includes(kinds, Events::State), listener_);
    }
    Subscription(Subscription const&) = delete;
    Subscription& operator=(Subscription const&) = delete;

    /// `destroyDirectSubscriber`, unless the engine has ended. Its exception is told to the
    /// diagnostics.
    ~Subscription() {
        try {
            if (ZANEngineProxy::isInitialized()) {
                ZANEngineProxy::getInstance().destroyDirectSubscriber(listener_);
            }
        } catch (std::exception const& e) {
            diagnose(DiagnosticLevel::Error, "engine",
                     std::string("a listener was not taken off: ") + e.what());
        } catch (...) {
            diagnose(DiagnosticLevel::Error, "engine", "a listener was not taken off");
        }
    }

private:
    counted_ptr<Listener> listener_;
};

} // namespace zan

#endif
