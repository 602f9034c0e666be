#include "server/engine/DeliveryQueue.h"

#include "adapter/DeliveryThread.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace zan::server {

namespace {

// A listener that was just about to return gets this much more.
constexpr std::chrono::milliseconds grace{200};

// To wake a thread costs more than to deliver a message, and the answer to what was delivered just
// now often comes within this time.
constexpr std::chrono::microseconds lookout{200};

std::size_t sizeOf(Delivery const& delivery) {
    std::size_t size = sizeof(Delivery);
    if (auto const* const entry = std::get_if<FixEntry>(&delivery)) {
        size += entry->text.size() + entry->note.size();
    } else if (auto const* const state = std::get_if<LinkState>(&delivery)) {
        size += state->lastError.size();
    }
    return size;
}

} // namespace

DeliveryQueue::DeliveryQueue(std::function<void(Delivery const&)> deliver,
                             std::function<void()> roomAgain, long lastId)
    : deliver_(std::move(deliver)), roomAgain_(std::move(roomAgain)), lastId_(lastId) {}

DeliveryQueue::~DeliveryQueue() {
    stop(std::chrono::milliseconds::zero());
}

void DeliveryQueue::start(std::shared_ptr<void> owner,
                          std::function<std::shared_ptr<void>()> takeListeners) {
    thread_ = std::thread(
        [this, owner = std::move(owner), takeListeners = std::move(takeListeners)]() mutable {
            DeliveryThread const lastOfAll;
            Leftovers const last = run(takeListeners);
            takeListeners = nullptr;
            owner.reset(); // the queue may be gone with it
        });
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
            isLeftBehind_ = true;
            thread_.detach();
            return false;
        }
    }
    lock.unlock();
    thread_.join();
    return true;
}

// The lock is held by all that call this.
template <class Item>
void DeliveryQueue::add(Item&& item) {
    waiting_.emplace_back(std::forward<Item>(item));
    bytes_ += sizeOf(waiting_.back());
    isFilled_ = true;
    if (!isRoomy()) {
        wasFull_ = true;
    }
}

void DeliveryQueue::push(std::vector<FixEntry>& entries) {
    if (entries.empty()) {
        return;
    }
    {
        std::lock_guard const lock(mutex_);
        lastId_ = entries.back().id;
        for (FixEntry& entry : entries) {
            add(std::move(entry));
        }
    }
    filled_.notify_one();
}

void DeliveryQueue::push(LinkState const& state) {
    {
        std::lock_guard const lock(mutex_);
        add(state);
    }
    filled_.notify_one();
}

void DeliveryQueue::push(std::function<void(long lastId)> task) {
    {
        std::lock_guard const lock(mutex_);
        if (isStopping_) {
            return;
        }
        add(Task{std::move(task), lastId_});
    }
    filled_.notify_one();
}

// The lock is held by all that call this.
bool DeliveryQueue::isRoomy() const {
    return waiting_.size() < capacity && bytes_ < byteCapacity;
}

bool DeliveryQueue::hasRoom() const {
    std::lock_guard const lock(mutex_);
    return isRoomy();
}

// The sources are told outside of the lock: they ask at once.
void DeliveryQueue::tellRoom() {
    {
        std::lock_guard const lock(mutex_);
        if (!wasFull_ || !isRoomy()) {
            return;
        }
        wasFull_ = false;
    }
    emptied_.notify_all();
    roomAgain_();
}

std::size_t DeliveryQueue::size() const {
    std::lock_guard const lock(mutex_);
    return waiting_.size() + undelivered_.load(std::memory_order_relaxed);
}

bool DeliveryQueue::waitForRoom(std::chrono::milliseconds patience) {
    std::unique_lock lock(mutex_);
    return emptied_.wait_for(lock, patience, [this] { return isRoomy() || isStopping_; });
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

// Who waits for the thread has to find the listeners gone. When nobody does, they go after the
// thread's own hold on the owner.
DeliveryQueue::Leftovers
DeliveryQueue::run(std::function<std::shared_ptr<void>()> const& takeListeners) {
    deliveringThread_ = std::this_thread::get_id();
    std::vector<Delivery> batch;
    while (take(batch)) {
        tellRoom();
        deliverAll(batch);
        if (isDropping_) {
            break;
        }
        batch.clear();
        lookOut();
    }
    Leftovers last{std::move(batch), takeListeners()};
    std::unique_lock lock(mutex_);
    std::ranges::move(waiting_, std::back_inserter(last.undone));
    waiting_.clear();
    undelivered_ = 0;
    bytes_ = 0;
    if (!isLeftBehind_) {
        lock.unlock();
        last.listeners.reset();
        last.undone.clear();
        lock.lock();
    }
    deliveringThread_ = std::thread::id();
    isFinished_ = true;
    finished_.notify_all();
    return last;
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

void DeliveryQueue::deliverAll(std::vector<Delivery>& batch) {
    for (Delivery& each : batch) {
        if (isDropping_) {
            return;
        }
        std::size_t const size = sizeOf(each);
        Delivery delivery = std::move(each); // a large one goes before the next
        began_ = Clock::now().time_since_epoch();
        deliver_(delivery);
        began_ = Clock::duration::zero();
        if (isDropping_) {
            each = std::move(delivery); // a task may be undone: who waits for it waits for the end
            return;
        }
        undelivered_.fetch_sub(1, std::memory_order_relaxed);
        bytes_ -= size;
        if (wasFull_) {
            tellRoom();
        }
    }
}

} // namespace zan::server
