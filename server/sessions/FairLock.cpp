#include "server/sessions/FairLock.h"

namespace zan {
namespace server {

namespace {
// Who has waited for so long is not passed over any more.
std::chrono::milliseconds const longestPassedOver(1);
} // namespace

bool FairLock::lockUntil(Clock::time_point deadline) {
    std::unique_lock<std::mutex> lock(mutex_);
    if (!isTaken_) {
        isTaken_ = true;
        return true;
    }
    Waiter waiter;
    waiter.since = Clock::now();
    waiting_.push_back(&waiter);
    bool const isOwner = waitUntil(waiter, deadline, lock);
    if (!waiter.isOwner)
        waiting_.remove(&waiter);
    return isOwner;
}

// Whoever is woken finds the lock its own already, or free, or taken by a passer-by.
bool FairLock::waitUntil(Waiter& waiter, Clock::time_point deadline,
                         std::unique_lock<std::mutex>& lock) {
    auto const mayGoOn = [this, &waiter] { return waiter.isOwner || !isTaken_; };
    if (deadline == Clock::time_point::max())
        waiter.turn.wait(lock, mayGoOn);
    else if (!waiter.turn.wait_until(lock, deadline, mayGoOn))
        return false;
    isTaken_ = true;
    return true;
}

void FairLock::unlock() {
    std::lock_guard<std::mutex> lock(mutex_);
    isTaken_ = false;
    if (waiting_.empty())
        return;
    Waiter& next = *waiting_.front();
    if (Clock::now() - next.since >= longestPassedOver) {
        isTaken_ = true;
        next.isOwner = true;
        waiting_.pop_front();
    }
    next.turn.notify_one();
}

} // namespace server
} // namespace zan
