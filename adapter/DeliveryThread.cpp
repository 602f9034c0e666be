#include "adapter/DeliveryThread.h"

#include <new>
#include <utility>

namespace zan {

namespace {

constinit thread_local DeliveryThread* current = nullptr;

} // namespace

DeliveryThread::DeliveryThread() : outer_(std::exchange(current, this)) {}

DeliveryThread::~DeliveryThread() {
    current = outer_;
    for (std::shared_ptr<void>& each : kept_) {
        each.reset();
    }
}

void DeliveryThread::keep(std::shared_ptr<void> last) noexcept {
    if (current) {
        try {
            current->kept_.push_back(std::move(last));
        } catch (std::bad_alloc const&) {
            // Let go of now: too early is better than never.
        }
    }
}

bool DeliveryThread::isCurrent() noexcept {
    return current != nullptr;
}

} // namespace zan
