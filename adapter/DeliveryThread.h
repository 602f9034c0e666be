/// `DeliveryThread`: what a thread that delivers events lets go of last.
///
/// A listener of the facade may end the facade. Its listeners then end with the delivery that is
/// under way, on a thread that may still have to end the engine that it belongs to; an application
/// that sees the last of them go would find the engine still there. An adapter that lets its
/// listeners stop it makes one of these objects on each of its delivery threads before anything
/// else, and lets go of the engine before it ends: the listeners go after that.
///
/// Threads: an object belongs to the thread that made it.
#ifndef ZANENGINE_ADAPTER_DELIVERYTHREAD_H
#define ZANENGINE_ADAPTER_DELIVERYTHREAD_H

#include "infra/Export.h"

#include <memory>
#include <vector>

namespace zan {

class ZAN_API DeliveryThread {
public:
    DeliveryThread();
    DeliveryThread(DeliveryThread const&) = delete;
    DeliveryThread& operator=(DeliveryThread const&) = delete;

    /// Lets go of what was kept, in the order in which it came.
    ~DeliveryThread();

    /// Keeps `last` until the object of the calling thread ends; on a thread without one it is let
    /// go of at once.
    static void keep(std::shared_ptr<void> last) noexcept;

    /// Whether the calling thread has such an object.
    static bool isCurrent() noexcept;

private:
    DeliveryThread* const outer_;
    std::vector<std::shared_ptr<void>> kept_;
};

} // namespace zan

#endif
