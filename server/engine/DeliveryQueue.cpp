#include "server/engine/DeliveryQueue.h"

#include <iterator>
#include <utility>

namespace zan::server {

namespace {

// A listener that was just about to return gets this much more.
constexpr std::chrono::milliseconds grace{200};

// To wake a thread costs more than to deliver a message, and the answer to what was delivered just
// now often comes within this time.
constexpr std::chrono::microseconds lookout{200};

} // namespace

DeliveryQueue::DeliveryQueue(std::function<void(Delivery const&)> deliver,
                             std::function<void()> roomAgain, long lastId)
    : deliver_(std::move(deliver)), roomAgain_(std::move(roomAgain)), lastId_(lastId) {}

DeliveryQueue::~DeliveryQueue() {
    stop(std::chrono::milliseconds::zero());
}

void DeliveryQueue::start(std::shared_ptr<void> owner, std::function<void()> atEnd) {
    thread_ =
        std::thread([this, owner = std::move(owner), atEnd = std::move(atEnd)] { run(atEnd); });
}

bool DeliveryQueue::stop(std::chrono::milliseconds patience) {
    std::unique_lock lock(mutex_);
    isStopping_ = true;
    filled_.notify_all();
    emptied_.notify_all();
    if (!thread_.joinable()) {
        waiting_.clear();
        return true;
    }
    auto const isFinished = [this] { return isFinished_; };
    if (!finished_.wait_for(lock, patience, isFinished)) {
        isDropping_ = true;
        if (isDelivering() || !finished_.wait_for(lock, grace, isFinished)) {
            thread_.detach();
            return false;
        }
    }
    lock.unlock();
    thread_.join();
    return true;
}

void DeliveryQueue::push(std::vector<FixEntry>& entries) {
    if (entries.empty()) {
        return;
    }
    {
        std::lock_guard const lock(mutex_);
        lastId_ = entries.back().id;
        std::ranges::move(entries, std::back_inserter(waiting_));
        isFilled_ = true;
    }
    filled_.notify_one();
}

void DeliveryQueue::push(LinkState const& state) {
    {
        std::lock_guard const lock(mutex_);
        waiting_.emplace_back(state);
        isFilled_ = true;
    }
    filled_.notify_one();
}

void DeliveryQueue::push(std::function<void(long lastId)> errand) {
    {
        std::lock_guard const lock(mutex_);
        if (isStopping_) {
            return;
        }
        waiting_.emplace_back(Errand{std::move(errand), lastId_});
        isFilled_ = true;
    }
    filled_.notify_one();
}

bool DeliveryQueue::hasRoom() const {
    std::lock_guard const lock(mutex_);
    return waiting_.size() < capacity;
}

std::size_t DeliveryQueue::size() const {
    std::lock_guard const lock(mutex_);
    return waiting_.size() + undelivered_.load(std::memory_order_relaxed);
}

bool DeliveryQueue::waitForRoom(std::chrono::milliseconds patience) {
    std::unique_lock lock(mutex_);
    return emptied_.wait_for(lock, patience,
                             [this] { return waiting_.size() < capacity || isStopping_; });
}

bool DeliveryQueue::isDelivering() const {
    return std::this_thread::get_id() == deliveringThread_;
}

std::chrono::milliseconds DeliveryQueue::timeOfDelivery() const {
    Clock::duration const began = began_;
    if (began == Clock::duration::zero()) {
        return std::chrono::milliseconds::zero();
    }
    return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now().time_since_epoch() -
                                                                 began);
}

// The thread's own hold on the owner goes after this: nothing of the queue is touched then.
void DeliveryQueue::run(std::function<void()> const& atEnd) {
    deliveringThread_ = std::this_thread::get_id();
    std::vector<Delivery> batch;
    while (take(batch)) {
        if (batch.size() >= capacity) {
            emptied_.notify_all();
            roomAgain_();
        }
        deliverAll(batch);
        if (isDropping_) {
            break;
        }
        batch.clear();
        lookOut();
    }
    atEnd();
    deliveringThread_ = std::thread::id();
    std::lock_guard const lock(mutex_);
    waiting_.clear();
    undelivered_ = 0;
    isFinished_ = true;
    finished_.notify_all();
}

// Stays awake for a while. One queue of the process does so at a time, and it gives way to every
// thread that has work: at most one processor that is idle is kept busy.
void DeliveryQueue::lookOut() const {
    static std::atomic<bool> isTaken{false};
    if (isTaken.exchange(true)) {
        return;
    }
    auto const end = Clock::now() + lookout;
    while (!isFilled_ && Clock::now() < end) {
        std::this_thread::yield();
    }
    isTaken = false;
}

bool DeliveryQueue::take(std::vector<Delivery>& batch) {
    std::unique_lock lock(mutex_);
    filled_.wait(lock, [this] { return !waiting_.empty() || isStopping_; });
    if (waiting_.empty() || isDropping_) {
        return false;
    }
    batch.swap(waiting_);
    undelivered_.store(batch.size(), std::memory_order_relaxed);
    isFilled_ = false;
    return true;
}

void DeliveryQueue::deliverAll(std::vector<Delivery> const& batch) {
    for (Delivery const& delivery : batch) {
        if (isDropping_) {
            return;
        }
        began_ = Clock::now().time_since_epoch();
        deliver_(delivery);
        began_ = Clock::duration::zero();
        undelivered_.fetch_sub(1, std::memory_order_relaxed);
    }
}

} // namespace zan::server
