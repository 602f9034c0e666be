#include "server/engine/DeliveryQueue.h"

#include <limits>
#include <utility>

namespace zan::server {

DeliveryQueue::DeliveryQueue(std::function<void(Delivery const&)> deliver,
                             std::function<void()> roomAgain)
    : deliver_(std::move(deliver)), roomAgain_(std::move(roomAgain)) {}

DeliveryQueue::~DeliveryQueue() {
    stop();
}

void DeliveryQueue::start() {
    thread_ = std::thread([this] { run(); });
}

void DeliveryQueue::stop() {
    {
        std::lock_guard const lock(mutex_);
        isStopping_ = true;
    }
    filled_.notify_all();
    emptied_.notify_all();
    if (thread_.joinable()) {
        thread_.join();
    }
}

long DeliveryQueue::push(std::string const& text, bool isAdmin) {
    WireMessage message{text, isAdmin, 0, nowMillis()};
    long id = 0;
    {
        std::lock_guard const lock(mutex_);
        // Applications get the number as 32 bits.
        lastId_ = lastId_ == std::numeric_limits<std::int32_t>::max() ? 1 : lastId_ + 1;
        id = message.id = lastId_;
        waiting_.emplace_back(std::move(message));
    }
    filled_.notify_one();
    return id;
}

void DeliveryQueue::push(LinkState const& state) {
    {
        std::lock_guard const lock(mutex_);
        waiting_.emplace_back(state);
    }
    filled_.notify_one();
}

bool DeliveryQueue::hasRoom() const {
    std::lock_guard const lock(mutex_);
    return waiting_.size() < capacity;
}

bool DeliveryQueue::waitForRoom(std::chrono::milliseconds patience) {
    std::unique_lock lock(mutex_);
    return emptied_.wait_for(lock, patience,
                             [this] { return waiting_.size() < capacity || isStopping_; });
}

bool DeliveryQueue::isDelivering() const {
    return std::this_thread::get_id() == deliveringThread_;
}

void DeliveryQueue::run() {
    deliveringThread_ = std::this_thread::get_id();
    std::vector<Delivery> batch;
    while (true) {
        {
            std::unique_lock lock(mutex_);
            filled_.wait(lock, [this] { return !waiting_.empty() || isStopping_; });
            if (waiting_.empty()) {
                return;
            }
            batch.swap(waiting_);
        }
        if (batch.size() >= capacity) {
            emptied_.notify_all();
            roomAgain_();
        }
        for (Delivery const& delivery : batch) {
            deliver_(delivery);
        }
        batch.clear();
    }
}

} // namespace zan::server
